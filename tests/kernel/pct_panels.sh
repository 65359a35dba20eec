# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# What holds of projected-capacitive panels whichever node they are found on: the two scenarios of
# an 8752 and an 8753 panel share it.
# shellcheck source=tests/kernel/guest.sh
source "$(dirname "${BASH_SOURCE[0]}")/guest.sh"

# The settings in the record read last.
kept_frequency() { payload_bytes 22 2; }
kept_screen() { payload_bytes 25 1; }

# The identity block in a panel's flash, digits alone: vendor, product, firmware's revision, six
# zeros, serial number, twelve zeros, checksum.
identity_block() {  # PANEL
    local bytes
    bytes=$(bench flash "$1")
    bytes=${bytes// /}
    echo "${bytes,,}"
}

# The flash of a panel holds its identity, and this serial number.
expect_identity() {  # PANEL IDS-AND-REVISION SERIAL-NUMBER
    local block=${2}000000000000${3}000000000000000000000000 sum
    sum=$(checksum "$block")
    expect "identity in panel $1" "$(identity_block "$1")" "$block${sum:2}${sum:0:2}"
}

# A panel's only record, with its port and serial number, is whole.
expect_record() {  # FILE PHYS SERIAL-NUMBER USB-ID
    read_record "$1" "$3"
    expect "record in $1" "$record" "$2 $3 $4"
    local sum
    sum=$(checksum "${payload:0:64}")
    expect "checksum in $1" "${payload:64:4}" "${sum:2}${sum:0:2}"
}

# Settings are changed, kept, changed again and reverted. Behaviour when touched is in the
# controller, the rest in the record.
expect_settings_are_kept() {  # PANEL INDEX PHYS SERIAL-NUMBER USB-ID
    zelkoractl set "$2" frequency=1500 click-mode=touch right-time=7 screen=3
    expect "exit code" "$code" 0
    expect "clicks and right click in the controller" "$(bench pos-config "$1")" "21 00 19 A7"
    expect_record .pctpbin "$3" "$4" "$5"
    expect "frequency in the record" "$(kept_frequency)" 1500
    expect "screen in the record" "$(kept_screen)" 3
    # The first change saves what there was.
    expect_record .pctpbintmp "$3" "$4" "$5"
    expect "frequency saved" "$(kept_frequency)" 2000

    zelkoractl keep "$2"
    expect "exit code" "$code" 0
    expect_record .pctpbintmp "$3" "$4" "$5"
    expect "frequency saved" "$(kept_frequency)" 1500

    zelkoractl set "$2" frequency=700 click-mode=release menu=down right-range=1
    expect "exit code" "$code" 0
    expect "clicks and right click in the controller" "$(bench pos-config "$1")" "21 00 1E 17"
    expect_record .pctpbin "$3" "$4" "$5"
    expect "frequency in the record" "$(kept_frequency)" 700

    zelkoractl revert "$2"
    expect "exit code" "$code" 0
    expect "clicks and right click in the controller" "$(bench pos-config "$1")" "21 00 19 A7"
    expect_record .pctpbin "$3" "$4" "$5"
    expect "frequency in the record" "$(kept_frequency)" 1500
    expect "screen in the record" "$(kept_screen)" 3
    read_record .pctpbintmp "$4"
    expect "saved set" "$payload" "$(printf 'ff%.0s' {1..64})"
}

# An 8752 panel with a blank flash and an 8753 panel with a serial number, at these nodes.
expect_pct_panels() {  # NODE-OF-THE-8752 NODE-OF-THE-8753
    local phys_8752=usb-vhci_hcd.0-1/input0 phys_8753=usb-vhci_hcd.0-2/input0
    zelkoractl list --json
    expect "exit code" "$code" 0
    expect "panels" "$(field '.panels | length')" 2
    local at_8752 at_8753 sn_8752 sn_8753=0011223344556677
    at_8752=$(panel_at "$1")
    at_8753=$(panel_at "$2")
    local facts='.usb_id, .firmware, .family, .mode, .phys, .event_node'
    expect "8752" "$(field ".panels[$at_8752] | $facts" | xargs)" \
        "2575:8752 S3.0.81(r564) 8752 digitizer $phys_8752 ${event[0]}"
    expect "8753" "$(field ".panels[$at_8753] | $facts" | xargs)" \
        "2575:8753 S8.7.53(r400) 8753 digitizer $phys_8753 ${event[1]}"
    expect "serial number" "$(field ".panels[$at_8753].serial_number")" $sn_8753
    sn_8752=$(field ".panels[$at_8752].serial_number")
    expect_match "a new serial number" "$sn_8752" '^[0-9a-f]{16}$'
    [[ $sn_8752 != 0000000000000000 ]] || fail "no serial number"
    expect_identity 0 257587520234 "$sn_8752"
    expect_identity 1 257587530190 $sn_8753
    expect "device mode of the 8752" "$(bench device-mode 0)" normal
    expect "who may write the records" "$(stat -c %a $store/.pctpbin)" 777
    expect "serial numbers known" "$(records .pctuniq | cut -d ' ' -f 2 | sort | xargs)" \
        "$(printf '%s\n' "$sn_8752" $sn_8753 | sort | xargs)"

    zelkoractl show "$at_8752" --json
    expect "exit code" "$code" 0
    expect "its serial number stays" "$(field .panel.serial_number)" "$sn_8752"
    expect "settings shown" "$(field '.settings | length')" 13
    expect "frequency" "$(field .settings.frequency.value)" 2000

    expect_settings_are_kept 0 "$at_8752" $phys_8752 "$sn_8752" 2575_8752
    expect "device mode of the 8752" "$(bench device-mode 0)" normal
    expect "the 8753" "$(bench pos-config 1)" "21 00 18 A4"
    expect_settings_are_kept 1 "$at_8753" $phys_8753 $sn_8753 2575_8753
    expect "records" "$(records .pctpbin | wc -l)" 2
    expect "device mode of the 8752" "$(bench device-mode 0)" normal
}
