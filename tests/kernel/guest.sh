# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
# shellcheck disable=SC2034  # the variables are for the scenarios
#
# Helpers for the scenarios; sourced inside the guest. Everything a scenario prints is its evidence.
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")

# The nodes of the attached panels, in the order of attachment, and those of their pens; "-" for a
# node that does not exist.
declare -a hiddev hidraw event pen_hidraw pen_event

fail() {
    echo "not so: $*" >&2
    exit 1
}

expect() {  # WHAT ACTUAL EXPECTED
    [[ $2 == "$3" ]] || fail "$1: \"$2\" instead of \"$3\""
    echo "ok: $1: $2"
}

expect_match() {  # WHAT ACTUAL EXTENDED-REGULAR-EXPRESSION
    [[ $2 =~ $3 ]] || fail "$1: \"$2\" does not match \"$3\""
    echo "ok: $1"
}

# Where the library keeps its files.
store=/opt/.touch_panel

# What a host has after the installation: the product names that are panels.
install_name_list() {  # NAME...
    mkdir -p $store
    printf '%s\n' "$@" >$store/rmanuflist.conf
}

# The same for projected-capacitive panels.
install_pct_name_list() {  # NAME...
    mkdir -p $store
    printf '%s\n' "$@" >$store/manuflist.conf
}

# Plugs emulated controllers in and goes on serving them; see zelkora-usbip --help for DESCRIPTION.
attach() {  # DESCRIPTION...
    coproc usbip { exec "$ZELKORA_BUILD/zelkora-usbip" --trace /run/trace.log "$@"; }
    local words
    while read -ra words <&"${usbip[0]}"; do
        [[ ${words[0]} == plugged ]] || break
        note_nodes "${words[@]:1}"
    done
    [[ ${words[*]} == ready ]] || fail "the controllers could not be plugged in"
}

note_nodes() {  # PANEL HIDDEV HIDRAW EVENT [PEN-HIDDEV PEN-HIDRAW PEN-EVENT]; or PANEL PORT
    hiddev[$1]=$2
    hidraw[$1]=${3:--}
    event[$1]=${4:--}
    pen_hidraw[$1]=${6:--}
    pen_event[$1]=${7:--}
    echo "panel $1 is plugged in: ${*:2}"
}

# Asks the emulated controllers themselves; see zelkora-usbip --help for COMMAND.
bench() {  # COMMAND...
    local answer
    echo "$*" >&"${usbip[1]}"
    read -r answer <&"${usbip[0]}"
    [[ $answer != error:* ]] || fail "$*: $answer"
    echo "$answer"
}

# Puts an unplugged panel back, into another port, where its nodes may be others.
plug() {  # PANEL
    local answer words
    answer=$(bench plug "$1")
    read -ra words <<<"$answer"
    note_nodes "${words[@]:1}"
}

# How many command frames reached an emulated controller so far.
frame_count() {  # PANEL
    local answer
    answer=$(bench frames "$1")
    echo "${answer%% *}"
}

# The host, and what became of it: its exit code in `code`, its words in `output` and `errors`.
# A host that hangs ends with code 124, after a minute or the seconds in `patience` (0: never).
zelkoractl() {
    echo "\$ zelkoractl $*"
    code=0
    output=$(timeout "${patience:-60}" "$ZELKORA_BUILD/zelkoractl" "$@" 2>/run/errors) || code=$?
    errors=$(</run/errors)
    printf '%s\n' "$output" "$errors" "exit code $code"
}

# A value out of the JSON document that zelkoractl answered with.
field() {  # JQ-PATH
    jq -r "$1" <<<"$output"
}

# The number that zelkoractl listed a node under: the kernel's directories are in no order.
panel_at() {  # NODE
    field ".panels[] | select(.node == \"$1\").index"
}

# The records of a store file, a line each: phys, serial number, USB id, payload in hexadecimal.
records() {  # FILE
    local bytes field
    od -An -v -tx1 -w347 "$store/$1" | while IFS= read -r bytes; do
        ((${#bytes} == 3 * 347)) || fail "$1 ends within a record"
        for field in "${bytes:0:3 * 256}" "${bytes:3 * 256:3 * 17}" "${bytes:3 * 273:3 * 10}"; do
            field=${field%% 00*}
            printf '%b ' "${field// /\\x}"
        done
        field=${bytes:3 * 283}
        echo "${field// /}"
    done
}

# Reads the only record that a store file has of a panel into `record`, without its payload, and
# `payload`.
read_record() {  # FILE PHYS-OR-SERIAL-NUMBER
    local found
    found=$(records "$1" | grep -wF -- "$2") || fail "$1 holds no record of $2"
    [[ $found != *$'\n'* ]] || fail "$1 holds several records of $2"
    record=${found% *}
    payload=${found##* }
}

# A number in the payload read last, its high byte first.
payload_bytes() {  # OFFSET COUNT
    echo $((16#${payload:2 * $1:2 * $2}))
}

# What controllers and records are checked by.
checksum() {  # HEXADECIMAL-DIGITS
    local sum=$((0x6666)) i
    for ((i = 0; i < ${#1}; i += 2)); do ((sum += 16#${1:i:2})); done
    printf '%04x\n' $((sum & 0xFFFF))
}
