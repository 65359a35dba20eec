# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# A panel is unplugged while it is read, and then it is gone: each time the host ends with a clear
# message, and the other panel is not disturbed.
source "$(dirname "$0")/../guest.sh"

beep=86

install_name_list "Virtual Resistive"
attach resistive,firmware=V1.2 resistive,firmware=V1.3

zelkoractl list --json
expect "panels" "$(field '.panels | length')" 2
first=$(panel_at "${hiddev[0]}")

# Showing all settings takes more than twenty commands; the plug is pulled in between.
seen=$(frame_count 0)
{
    zelkoractl show "$first" >/run/show.log
    echo "$code" >/run/show.code
} &
show=$!
until (($(frame_count 0) >= seen + 4)); do sleep 0.02; done
bench unplug 0
wait "$show"
cat /run/show.log
expect "exit code" "$(</run/show.code)" 1
expect_match "message names the node" "$(</run/show.log)" \
    "${hiddev[0]}: .*(did not tell|does not answer|cannot be opened)"
[[ ! -e ${hiddev[0]} ]] || fail "${hiddev[0]} is still there"

zelkoractl list --json
expect "exit code" "$code" 0
expect "panels left" "$(field '.panels[].node')" "${hiddev[1]}"
expect "its firmware" "$(field '.panels[].firmware')" V1.3

zelkoractl set 1 beep=off
expect "exit code" "$code" 3
expect_match "message" "$errors" "there is no panel 1"

zelkoractl set 0 beep=off
expect "exit code" "$code" 0
expect "beep word of the panel left" "$(bench value 1 $beep)" 0
expect "beep word of the panel gone" "$(bench value 0 $beep)" 1

bench unplug 1
zelkoractl list --json
expect "exit code" "$code" 0
expect "panels left" "$(field '.panels | length')" 0
zelkoractl set 0 beep=on
expect "exit code" "$code" 3
expect_match "message" "$errors" "there is no panel 0"
