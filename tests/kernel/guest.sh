# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
# shellcheck disable=SC2034  # the variables are for the scenarios
#
# Helpers for the scenarios; sourced inside the guest. Everything a scenario prints is its evidence.
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")

# The nodes of the attached panels, in the order of attachment.
declare -a hiddev hidraw event

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

# What a host has after the installation: the product names that are panels.
install_name_list() {  # NAME...
    mkdir -p /opt/.touch_panel
    printf '%s\n' "$@" >/opt/.touch_panel/rmanuflist.conf
}

# Plugs emulated controllers in and goes on serving them; see zelkora-usbip --help for DESCRIPTION.
attach() {  # DESCRIPTION...
    coproc usbip { exec "$ZELKORA_BUILD/zelkora-usbip" "$@"; }
    local word panel hiddev_node hidraw_node event_node
    while read -r word panel hiddev_node hidraw_node event_node <&"${usbip[0]}"; do
        [[ $word == plugged ]] || break
        hiddev[panel]=$hiddev_node
        hidraw[panel]=$hidraw_node
        event[panel]=$event_node
        echo "panel $panel is plugged in: $hiddev_node $hidraw_node $event_node"
    done
    [[ $word == ready ]] || fail "the controllers could not be plugged in"
}

# Asks the emulated controllers themselves; see zelkora-usbip --help for COMMAND.
bench() {  # COMMAND...
    local answer
    echo "$*" >&"${usbip[1]}"
    read -r answer <&"${usbip[0]}"
    [[ $answer != error:* ]] || fail "$*: $answer"
    echo "$answer"
}

# How many command frames reached an emulated controller so far.
frame_count() {  # PANEL
    local answer
    answer=$(bench frames "$1")
    echo "${answer%% *}"
}

# The host, and what became of it: its exit code in `code`, its words in `output` and `errors`.
# A host that hangs ends with code 124.
zelkoractl() {
    echo "\$ zelkoractl $*"
    code=0
    output=$(timeout 60 "$ZELKORA_BUILD/zelkoractl" "$@" 2>/run/errors) || code=$?
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
