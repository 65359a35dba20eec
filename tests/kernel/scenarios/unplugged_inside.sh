# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# machine: skip-idle
#
# Panels are unplugged inside a setter and inside a mode switch, at several places: the host ends with
# a clear message, and the files of stored sets are what they were.
source "$(dirname "$0")/../guest.sh"

patience=0 # the clock jumps over waits for the disk too, up to any time-out

expect_same_files() {
    expect "files that changed" "$(diff -rq /run/before $store || true)" ""
}

install_name_list "Virtual Resistive"
install_pct_name_list "Virtual PCT"
# In the first look at a panel, in the query of its firmware, in the change itself.
places=(0 2 7)
attach resistive,firmware=V1.2 resistive,firmware=V1.2 resistive,firmware=V1.2 \
    pct8753,sn=A102030405060708

zelkoractl list --json
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" $((${#places[@]} + 1))
expect "resistive records" "$(records .restpbin | wc -l)" 3
expect "PCT records" "$(records .pctpbin | wc -l)" 1
cp -a $store /run/before

for panel in "${!places[@]}"; do
    zelkoractl list --json
    index=$(panel_at "${hiddev[panel]}")
    bench fault "$panel" "unplugs-after=${places[panel]}"
    zelkoractl set "$index" beep=off
    ((code != 0)) || fail "a panel that is gone was set"
    expect_match "message" "$errors" "(${hiddev[panel]}: |there is no panel)"
    until [[ ! -e ${hiddev[panel]} ]]; do sleep 0.1; done
    echo "unplug $panel" >&"${usbip[1]}"
    read -r answer <&"${usbip[0]}"
    expect "another unplug" "$answer" "error: panel $panel is unplugged already"
    expect_same_files
done

zelkoractl list --json
expect "exit code" "$code" 0
expect "panels left" "$(field '.panels[].usb_id')" 2575:8753
bench fault 3 unplugs-after=12
zelkoractl mode 0 mouse
((code != 0)) || fail "a panel that is gone was switched over"
expect_match "message" "$errors" "(${hiddev[3]}: |there is no panel)"
[[ ! -e ${hiddev[3]} ]] || fail "${hiddev[3]} is still there"
expect_same_files
