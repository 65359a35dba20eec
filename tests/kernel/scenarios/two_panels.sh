# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# Two panels with names of their own: both are listed, and a change reaches the one it names alone.
source "$(dirname "$0")/../guest.sh"

frequency=88

install_name_list "Left Panel" "Right Panel"
attach "resistive,id=3A4C:1688,name=Left Panel,firmware=V1.2" \
    "resistive,id=3B17:0001,name=Right Panel,firmware=V2.5"

zelkoractl list --json
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" 2
left=$(panel_at "${hiddev[0]}")
right=$(panel_at "${hiddev[1]}")
expect "left panel" "$(field ".panels[$left] | .usb_id, .firmware" | xargs)" "3A4C:1688 V1.2"
expect "right panel" "$(field ".panels[$right] | .usb_id, .firmware" | xargs)" "3B17:0001 V2.5"
expect "left event node" "$(field ".panels[$left].event_node")" "${event[0]}"
expect "right event node" "$(field ".panels[$right].event_node")" "${event[1]}"

zelkoractl set "$right" frequency=1500
expect "exit code" "$code" 0
expect "frequency of the right panel" "$(bench value 1 $frequency)" 1500
expect "frequency of the left panel" "$(bench value 0 $frequency)" 2000

zelkoractl set "$left" frequency=700
expect "exit code" "$code" 0
expect "frequency of the left panel" "$(bench value 0 $frequency)" 700
expect "frequency of the right panel" "$(bench value 1 $frequency)" 1500
