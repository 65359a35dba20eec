# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# With hidraw nodes switched on, panels of both families show up twice, as a hiddev and as a hidraw
# node. Each counts once, as its hiddev node, and is sent nothing over the other one.
source "$(dirname "$0")/../guest.sh"

# Lists the panels; how many commands each was sent for that is left in `sent`.
sent_by_list() {  # SWITCH
    local before=("$(frame_count 0)" "$(frame_count 1)")
    printf '[switches]\nhidraw = %s\n' "$1" >/run/zelkoractl.ini
    zelkoractl --config /run/zelkoractl.ini list --json --debug
    sent="$(($(frame_count 0) - before[0])) $(($(frame_count 1) - before[1]))"
}

install_pct_name_list "Virtual PCT"
attach pct8752,sn=7766554433221100 pct8753,sn=0011223344556677

sent_by_list off
expect "exit code" "$code" 0
expect "panels" "$(field '[.panels[].node] | sort | join(" ")')" "${hiddev[*]}"
expect "hidraw nodes looked at" "$(grep -c "device node:/dev/hidraw" <<<"$errors")" 0
sent_without=$sent

sent_by_list on
expect "exit code" "$code" 0
expect "panels" "$(field '[.panels[].node] | sort | join(" ")')" "${hiddev[*]}"
for i in 0 1; do
    expect_match "${hidraw[i]} is looked at" "$errors" "device node:${hidraw[i]} HidRaw:1 fd:[1-9]"
    expect "phys of ${hidraw[i]} is known already" \
        "$(grep -c "###exist phys:usb-vhci_hcd.0-$((i + 1))/input0###" <<<"$errors")" 1
done
expect "commands to each panel" "$sent" "$sent_without"

zelkoractl set "$(panel_at "${hiddev[1]}")" click-mode=touch
expect "exit code" "$code" 0
expect "clicks in the controller" "$(bench pos-config 1)" "21 00 19 A4"
expect "clicks in the other one" "$(bench pos-config 0)" "21 00 18 A4"
