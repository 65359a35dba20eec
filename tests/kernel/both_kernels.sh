# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# Asks nodes of the real kernel and of the virtual one the same and compares the answers; sourced
# inside the guest, behind guest.sh.

# Has the nodes asked ("-" for one that does not exist), and the panel unplugged half way.
ask() {  # ANSWERS HIDDEV HIDRAW EVENT UNPLUG-COMMAND...
    local answers=$1 probe
    mkfifo "$answers.go"
    # shellcheck disable=SC2086  # the options are words
    "$ZELKORA_BUILD/hid-probe" ${probe_options-} "$2" "$3" "$4" <"$answers.go" >"$answers" &
    probe=$!
    exec 7>"$answers.go"
    rm "$answers.go"
    until grep -q "now unplug" "$answers"; do
        kill -0 $probe || return
        sleep 0.1
    done
    "${@:5}" >/dev/null
    exec 7>&-
    wait $probe
}

# Runs a function inside a session of zelkora-sim.
on_the_virtual_kernel() {  # FUNCTION DESCRIPTION...
    local description arguments=()
    for description in "${@:2}"; do arguments+=(--panel "$description"); done
    export -f ask "${1?}"
    "$ZELKORA_BUILD/zelkora-sim" "${arguments[@]}" -- bash -euc "$1"
}

# The answers are in /run/realNUMBER and /run/virtualNUMBER, in the order of the descriptions.
expect_same_answers() {  # LEAST-LINES DESCRIPTION...
    local number lines differing=()
    cp /run/real* /run/virtual* /run/results
    for ((number = 0; number < $# - 1; ++number)); do
        local what=${*:number + 2:1}
        lines=$(wc -l <"/run/real$number")
        ((lines >= $1)) || fail "$what was asked too little, $lines lines"
        grep -q '^unplugged' "/run/real$number" || fail "$what was not asked when it was unplugged"
        # < the real kernel, > the virtual one
        diff "/run/real$number" "/run/virtual$number" || differing+=("$what")
    done
    expect "panels that answer differently" "${differing[*]}" ""
}
