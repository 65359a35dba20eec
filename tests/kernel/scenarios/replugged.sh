# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# Two PCT panels of one make change places, and a resistive one moves to another port. The PCT
# panels' settings go with their serial numbers. The resistive panel's record is found by the USB
# id, and copied for the new port; it can be reverted to what was kept at the old one.
source "$(dirname "$0")/../guest.sh"

beep=86 frequency=88
first_sn=0011223344556677
second_sn=7766554433221100

phys() {  # PORT
    echo "usb-vhci_hcd.0-$1/input0"
}

install_name_list "Virtual Resistive"
install_pct_name_list "Virtual PCT"
attach pct8753,sn=$first_sn pct8753,sn=$second_sn resistive

zelkoractl list --json
expect "exit code" "$code" 0
first=$(panel_at "${hiddev[0]}")
second=$(panel_at "${hiddev[1]}")
resistive=$(panel_at "${hiddev[2]}")
zelkoractl set "$first" frequency=1500 click-mode=touch
expect "exit code" "$code" 0
zelkoractl set "$second" frequency=700 click-mode=release
expect "exit code" "$code" 0
zelkoractl set "$resistive" frequency=1500 beep=off
expect "exit code" "$code" 0
zelkoractl keep "$resistive"
expect "exit code" "$code" 0
read_record .restpbin "$(phys 3)"
kept=$payload
expect "frequency kept" "$(payload_bytes 6 2)" 1500

for i in 0 1 2; do bench unplug $i; done
zelkoractl list --json
expect "panels" "$(field '.panels | length')" 0
# Without power PCT panels forget what they were told.
for i in 0 1; do bench set-pos-config $i 210010A4; done
for i in 0 1 2; do plug $i; done

zelkoractl list --json
expect "exit code" "$code" 0
expect "places" "$(field '.panels[] | "\(.phys) \(.serial_number)"' | sort | xargs)" \
    "$(phys 1) $second_sn $(phys 2) $first_sn $(phys 4) null"
expect "clicks in the first panel" "$(bench pos-config 0)" "21 00 19 A4"
expect "clicks in the second panel" "$(bench pos-config 1)" "21 00 1A A4"
expect "PCT records" "$(records .pctpbin | wc -l)" 2
read_record .pctpbin $first_sn
expect "first record" "$record" "$(phys 2) $first_sn 2575_8753"
expect "its frequency" "$(payload_bytes 22 2)" 1500
read_record .pctpbin $second_sn
expect "second record" "$record" "$(phys 1) $second_sn 2575_8753"
expect "its frequency" "$(payload_bytes 22 2)" 700
expect "serial numbers known" "$(records .pctuniq | cut -d ' ' -f 2 | sort | xargs)" \
    "$first_sn $second_sn"
expect "resistive records" "$(records .restpbin | cut -d ' ' -f 1,3 | xargs)" \
    "$(phys 3) 3A4C_1688 $(phys 4) 3A4C_1688"
read_record .restpbin "$(phys 4)"
expect "the copy" "$payload" "$kept"
expect "beep in the controller" "$(bench permanent 2 $beep)" 0

resistive=$(panel_at "${hiddev[2]}")
zelkoractl set "$resistive" frequency=700
expect "exit code" "$code" 0
expect "frequency in the controller" "$(bench permanent 2 $frequency)" 700
zelkoractl revert "$resistive"
expect "exit code" "$code" 0
expect "frequency in the controller" "$(bench permanent 2 $frequency)" 1500
