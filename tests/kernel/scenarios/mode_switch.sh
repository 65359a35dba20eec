# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# An 8753 panel is made a mouse, a hybrid and a digitizer again. Each time it leaves the bus and
# comes back with another product id, on the same port; it is found again, and so are its settings.
# A program that keeps the old hidraw node open makes the kernel give it another one.
source "$(dirname "$0")/../guest.sh"

phys=usb-vhci_hcd.0-1/input0
sn=0011223344556677

# Everything that tells the mode of the panel that was reset once more.
expect_mode() {  # NAME POS-MODE PRODUCT-ID RESETS
    zelkoractl mode 0 "$1" --json
    expect "exit code" "$code" 0
    expect "reset" "$(field .was_reset)" true
    expect "id" "$(field .usb_id)" "2575:$3"
    expect "mode" "$(field .mode)" "$1"
    expect "resets of the controller" "$(bench resets 0)" "$4"
    expect "its POS mode" "$(bench pos-mode 0)" "$2"
    expect "its stored id" "$(bench stored-usb-id 0)" "2575:$3"

    zelkoractl list --json
    expect "panels" "$(field '.panels | length')" 1
    expect "the panel of that port" \
        "$(field ".panels[] | select(.phys == \"$phys\") | .usb_id, .mode, .recorded_usb_id" | xargs)" \
        "2575:$3 $1 2575:8753"
    local node event_node
    node=$(field '.panels[0].node')
    expect "the kernel's id of $node" "$(<"/sys/class/usbmisc/${node##*/}/device/../idProduct")" "$3"
    event_node=$(field '.panels[0].event_node')
    expect "the kernel's phys of $event_node" \
        "$(<"/sys/class/input/${event_node##*/}/device/phys")" $phys

    # The record keeps the id that it was written with.
    read_record .pctpbin $sn
    expect "record" "$record" "$phys $sn 2575_8753"
    expect "settings in the record" "$payload" "$settings"
    expect "records" "$(records .pctpbin | wc -l)" 1
    expect "configuration of the controller" "$(bench pos-config 0)" "21 0$(($2 - 1)) 1A A7"
}

install_pct_name_list "Virtual PCT"
attach pct8753,sn=$sn
zelkoractl set 0 frequency=1500 click-mode=release right-time=7
expect "exit code" "$code" 0
read_record .pctpbin $sn
settings=$payload
expect "frequency in the record" "$(payload_bytes 22 2)" 1500

exec 8<>"${hidraw[0]}"
expect_mode mouse 2 9969 1
[[ ! -e ${hidraw[0]} ]] || fail "${hidraw[0]} is there again"
expect "hidraw nodes" "$(echo /dev/hidraw*)" /dev/hidraw1
exec 8>&-

expect_mode hybrid 3 9968 2
expect_mode digitizer 1 8753 3
expect "hidraw nodes" "$(echo /dev/hidraw*)" "${hidraw[0]}"
