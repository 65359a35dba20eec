# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# The virtual kernel that the other tests stand on answers like the real one: panels of every kind
# on both, asked the same, right and wrong, plugged and unplugged.
source "$(dirname "$0")/../guest.sh"

panels=(
    "resistive,id=3A4C:8888,firmware=V1.2"
    "resistive,signed-fields"
    "resistive,silent"
    "pct8752,sn=0102030405060708,pos=2"
    "pct8753,firmware=FFFE8191"
)

# Has the nodes asked, and the panel unplugged half way.
ask() {  # ANSWERS HIDDEV HIDRAW EVENT UNPLUG-COMMAND...
    local answers=$1 probe
    mkfifo "$answers.go"
    "$ZELKORA_BUILD/hid-probe" "$2" "$3" "$4" <"$answers.go" >"$answers" &
    probe=$!
    exec 7>"$answers.go"
    until grep -q "now unplug" "$answers"; do
        kill -0 $probe || return
        sleep 0.1
    done
    "${@:5}" >/dev/null
    exec 7>&-
    wait $probe
}

# The same on the virtual kernel; inside a session of zelkora-sim.
ask_virtual() {  # PANEL-COUNT
    local panel
    for ((panel = 0; panel < $1; ++panel)); do
        ask "/run/virtual$panel" "/dev/usb/hiddev$panel" "/dev/hidraw$panel" \
            "/dev/input/event$panel" "$ZELKORA_BUILD/zelkora-sim" unplug "$panel"
    done
}

attach "${panels[@]}"
arguments=()
for panel in "${!panels[@]}"; do
    ask "/run/real$panel" "${hiddev[panel]}" "${hidraw[panel]}" "${event[panel]}" \
        bench unplug "$panel"
    arguments+=(--panel "${panels[panel]}")
done
export -f ask ask_virtual
"$ZELKORA_BUILD/zelkora-sim" "${arguments[@]}" -- bash -c "ask_virtual ${#panels[@]}"

# < the real kernel, > the virtual one
for panel in "${!panels[@]}"; do
    [[ ! -d /run/results ]] || cp "/run/real$panel" /run/results
    expect "differences of ${panels[panel]}" \
        "$(diff "/run/real$panel" "/run/virtual$panel" | grep '^[<>]')" ""
    (($(wc -l <"/run/real$panel") > 900)) || fail "the panel was asked too little"
done
