# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# A panel that stalls every request for a reply. The kernel hides that on hiddev: the report reads
# back as the command just sent, so the firmware query finds its own letters. The library takes
# them for an answer; the host knows them, and says so instead of changing anything.
source "$(dirname "$0")/../guest.sh"

beep=86

install_name_list "Virtual Resistive"
attach resistive,firmware=V1.2,silent

zelkoractl list --json --debug
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" 1
expect "node" "$(field '.panels[0].node')" "${hiddev[0]}"
expect_match "the library reads the query back" "$errors" "GetFirmware FW = OI"
expect "the host takes that for no answer" "$(field '.panels[0].firmware')" null

zelkoractl set 0 beep=off
expect "exit code" "$code" 1
expect_match "message" "$errors" "${hiddev[0]}: panel 0 does not answer"
expect "beep word in the controller" "$(bench value 0 $beep)" 1

bench silent 0 off
zelkoractl set 0 beep=off
expect "exit code once it answers again" "$code" 0
expect "beep word in the controller" "$(bench value 0 $beep)" 0
