# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# The virtual kernel that the other tests stand on answers like the real one: panels of every kind
# on both, and a pen, asked the same, right and wrong, plugged and unplugged.
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../both_kernels.sh"

panels=(
    "resistive,id=3A4C:8888,firmware=V1.2"
    "resistive,signed-fields"
    "resistive,silent"
    "pct8752,sn=0102030405060708,pos=2"
    "pct8753,firmware=FFFE8191"
    "pct8753,nodes=hidraw"
    "pct8752,pen"  # of which the pen is asked
)
hidraw_only=5 with_pen=6 pen_number=${#panels[@]}

ask_virtual() {
    local panel hiddev hidraw event
    for ((panel = 0; panel < pen_number; ++panel)); do
        hiddev=/dev/usb/hiddev$panel hidraw=/dev/hidraw$panel event=/dev/input/event$panel
        ((panel != hidraw_only)) || hiddev=-
        ((panel != with_pen)) ||
            hiddev=- hidraw=/dev/hidraw$pen_number event=/dev/input/event$pen_number
        ask "/run/virtual$panel" "$hiddev" "$hidraw" "$event" \
            "$ZELKORA_BUILD/zelkora-sim" unplug "$panel"
    done
}

attach "${panels[@]}"
expect "hiddev node of the panel on hidraw" "${hiddev[hidraw_only]}" -
hiddev[with_pen]=- hidraw[with_pen]=${pen_hidraw[with_pen]} event[with_pen]=${pen_event[with_pen]}
for panel in "${!panels[@]}"; do
    ask "/run/real$panel" "${hiddev[panel]}" "${hidraw[panel]}" "${event[panel]}" \
        bench unplug "$panel"
done
export pen_number hidraw_only with_pen
on_the_virtual_kernel ask_virtual "${panels[@]}"
expect_same_answers 290 "${panels[@]}"
