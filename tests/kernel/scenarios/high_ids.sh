# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# Product ids from 0x8000 up, which hiddev hands out as negative numbers, are known all the same.
source "$(dirname "$0")/../guest.sh"

install_name_list "Virtual Resistive"
attach resistive,id=3A4C:8888,firmware=V1.2 resistive,id=3A4C:8008,firmware=V1.3

zelkoractl list --json
expect "exit code" "$code" 0
expect "ids" "$(field '[.panels[].usb_id] | sort | join(" ")')" "3A4C:8008 3A4C:8888"
expect "firmware of 3A4C:8888" \
    "$(field '.panels[] | select(.usb_id == "3A4C:8888").firmware')" V1.2

zelkoractl set "$(panel_at "${hiddev[1]}")" duration=20
expect "exit code" "$code" 0
expect "duration word of 3A4C:8008" "$(bench value 1 89)" 20
