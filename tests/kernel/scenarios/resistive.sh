# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# One resistive panel on a real hiddev node: it is listed and shown, settings are changed, kept,
# changed again and reverted. Each time the controller holds the values for good, and each of the
# two record files has the one record that is due.
source "$(dirname "$0")/../guest.sh"

# Addresses in the controller.
screen=55 edge_left=71 beep=86 frequency=88 record_checksum=91

# The words of a stored record.
kept_frequency() { payload_bytes 6 2; }
kept_beep() { payload_bytes 2 2; }
kept_checksum() { printf '%s\n' "${payload:64:4}"; }

install_name_list "Virtual Resistive"
attach "resistive,id=3A4C:1688,name=Virtual Resistive,firmware=V1.2"
phys=usb-vhci_hcd.0-1/input0

zelkoractl list --json
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" 1
expect "node" "$(field '.panels[0].node')" "${hiddev[0]}"
expect "node is the kernel's" "$(stat -c %F "${hiddev[0]}")" "character special file"
expect "USB id" "$(field '.panels[0].usb_id')" 3A4C:1688
expect "firmware" "$(field '.panels[0].firmware')" V1.2
expect "event node" "$(field '.panels[0].event_node')" "${event[0]}"
expect "phys" "$(field '.panels[0].phys')" $phys
expect "phys as sysfs has it" "$(</sys/class/input/"${event[0]##*/}"/device/phys)" $phys

# Finding the panel gave it a record of the default settings.
read_record .restpbin $phys
expect "record" "$record" "$phys 0000000000000000 3A4C_1688"
expect "frequency in the record" "$(kept_frequency)" 2000
expect "who may write the record" "$(stat -c %a $store/.restpbin)" 777
[[ ! -e $store/.restpbintmp ]] || fail "there is a working copy before anything was kept"
cp $store/.restpbin /run/defaults

zelkoractl show 0 --json
expect "exit code" "$code" 0
expect "settings shown" "$(field '.settings | length')" 16
expect "beep" "$(field .settings.beep.value)" on
expect "frequency" "$(field .settings.frequency.value)" 2000

zelkoractl set 0 beep=off frequency=1500
expect "exit code" "$code" 0
expect "beep in the controller" "$(bench value 0 $beep)" 0
expect "and after a reset" "$(bench permanent 0 $beep)" 0
expect "frequency in the controller" "$(bench value 0 $frequency)" 1500
expect "and after a reset" "$(bench permanent 0 $frequency)" 1500
cmp $store/.restpbin /run/defaults || fail "setting without keeping changed the record"

zelkoractl keep 0
expect "exit code" "$code" 0
for file in .restpbin .restpbintmp; do
    read_record $file $phys
    expect "beep kept in $file" "$(kept_beep)" 0
    expect "frequency kept in $file" "$(kept_frequency)" 1500
    expect "checksum in $file" "$(kept_checksum)" "$(checksum "${payload:0:64}")"
    expect "records in $file" "$(records $file | wc -l)" 1
done
flash_checksum=$(bench value 0 $record_checksum)
expect "the controller's checksum after a reset" "$(bench permanent 0 $record_checksum)" \
    "$flash_checksum"
((flash_checksum != 0)) || fail "the controller has no checksum"

zelkoractl set 0 frequency=700 screen=2 edge-left=-5
expect "exit code" "$code" 0
expect "frequency in the controller" "$(bench permanent 0 $frequency)" 700
expect "screen in the controller" "$(bench permanent 0 $screen)" 2
expect "left edge in the controller" "$(bench permanent 0 $edge_left)" 65531

# Another program has saved other settings meanwhile: they are taken back, too.
cp /run/defaults $store/.restpbin
zelkoractl revert 0
expect "exit code" "$code" 0
expect "frequency in the controller" "$(bench value 0 $frequency)" 1500
expect "and after a reset" "$(bench permanent 0 $frequency)" 1500
expect "screen in the controller" "$(bench permanent 0 $screen)" 0
expect "left edge in the controller" "$(bench permanent 0 $edge_left)" 0
expect "beep in the controller" "$(bench permanent 0 $beep)" 0
# From the working copy on the record has the serial number that stands in for a resistive panel's.
read_record .restpbin $phys
expect "record" "$record" "$phys 0102030405060708 3A4C_1688"
expect "frequency in the record" "$(kept_frequency)" 1500
taken_back=$payload
expect "records" "$(records .restpbin | wc -l)" 1
read_record .restpbintmp $phys
expect "working copy" "$payload" "$taken_back"

zelkoractl get 0 frequency
expect "exit code" "$code" 0
expect "frequency read back" "$output" 1500
