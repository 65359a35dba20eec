# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# The virtual kernel fails like the real one where controllers hang, over hiddev and hidraw. What
# the real kernel gives after seconds the virtual one gives at once.
# machine: skip-idle
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../both_kernels.sh"

panels=("resistive,hangs" "pct8753,hangs")
export probe_options=--one-exchange panel_count=${#panels[@]}

ask_virtual() {
    local panel
    for ((panel = 0; panel < panel_count; ++panel)); do
        ask "/run/virtual$panel" "/dev/usb/hiddev$panel" "/dev/hidraw$panel" \
            "/dev/input/event$panel" "$ZELKORA_BUILD/zelkora-sim" unplug "$panel"
    done
}

attach "${panels[@]}"
for panel in "${!panels[@]}"; do
    begin=$SECONDS
    ask "/run/real$panel" "${hiddev[panel]}" "${hidraw[panel]}" "${event[panel]}" \
        bench unplug "$panel"
    took=$((SECONDS - begin))
    echo "${panels[panel]} took $took s"
    ((took >= 15)) || fail "the kernel did not wait"
done
on_the_virtual_kernel ask_virtual "${panels[@]}"
expect_same_answers 10 "${panels[@]}"
