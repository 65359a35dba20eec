# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# One resistive panel: it is found on a real hiddev node, its beep is switched off, and the
# controller itself holds the 0.
source "$(dirname "$0")/../guest.sh"

beep=86

install_name_list "Virtual Resistive"
attach "resistive,id=3A4C:1688,name=Virtual Resistive,firmware=V1.2"
expect "beep word before" "$(bench value 0 $beep)" 1

zelkoractl list --json
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" 1
expect "node" "$(field '.panels[0].node')" "${hiddev[0]}"
expect "node is the kernel's" "$(stat -c %F "${hiddev[0]}")" "character special file"
expect "USB id" "$(field '.panels[0].usb_id')" 3A4C:1688
expect "firmware" "$(field '.panels[0].firmware')" V1.2
expect "event node" "$(field '.panels[0].event_node')" "${event[0]}"

zelkoractl set 0 beep=off
expect "exit code" "$code" 0
expect "beep word in the controller" "$(bench value 0 $beep)" 0
expect "and the one that survives a reset" "$(bench permanent 0 $beep)" 0

zelkoractl get 0 beep
expect "exit code" "$code" 0
expect "beep read back" "$output" off
