# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# Names, ids and ports as the kernel makes them: blanks in a name, names too long for the kernel,
# ids from 0x8000 up. Every panel has the event node of its own port.
source "$(dirname "$0")/../guest.sh"

# What sysfs tells of the HID device behind a hiddev node.
sysfs() {  # NODE KEY
    sed -n "s/^$2=//p" /sys/class/usbmisc/"${1##*/}"/device/0003:*/uevent
}

# What the library read as the name of a hiddev node.
name_read() {  # NODE
    sed -n "\\|device node:$1 |{n;s/.*MatchMyHidDevice device name://p}" <<<"$trace"
}

# The port in /proc/bus/input/devices of an event node.
listed_phys() {  # NODE
    awk -v node="${1##*/}" 'BEGIN { RS = ""; FS = "\n" }
        $0 ~ "[= ]" node " " { sub(/.*P: Phys=/, ""); print $1 }' /proc/bus/input/devices
}

# Manufacturer, blank and product have 127 characters: this one leaves 16 for the product.
long_maker=$(printf 'M%.0s' {1..110})

install_name_list "Touch Panel 15 inch" "Virtual Resistiv" "Pen Maker"
install_pct_name_list "Wide Glass"
attach "resistive,id=3B17:8888,maker=Blank & Sons  Ltd,name=Touch Panel 15 inch rev B" \
    "resistive,id=3A4C:8008,maker=$long_maker,name=Virtual Resistive" \
    "resistive,maker=$long_maker-,name=Virtual Resistive" \
    "resistive,maker=The Pen Maker,name=Resistive" \
    "pct8753,id=3E05:FFFE,name=Wide Glass,sn=0011223344556677" \
    "pct8753,maker=Pen & Paper,name=Wide Glass"
names=("Blank & Sons  Ltd Touch Panel 15 inch rev B" "$long_maker Virtual Resistiv"
    "$long_maker- Virtual Resisti" "The Pen Maker Resistive" "Zelkora Wide Glass"
    "Pen & Paper Wide Glass")
ids=(3B17:8888 3A4C:8008 3A4C:1688 3A4C:1688 3E05:FFFE 2575:8753)

zelkoractl list --json --debug
expect "exit code" "$code" 0
trace=$errors
for i in "${!names[@]}"; do
    expect "name in the kernel" "$(sysfs "${hiddev[i]}" HID_NAME)" "${names[i]}"
    expect "name in the library" "$(name_read "${hiddev[i]}")" "${names[i]}"
done

# The kernel cut the product name that the list has, or "Pen" is in the manufacturer's name.
expect "panels" "$(field '.panels | length')" 4
for i in 2 5; do
    expect "number of panel $i" "$(panel_at "${hiddev[i]}")" ""
    expect "commands sent to it" "$(frame_count $i)" 0
done

for i in 0 1 3 4; do
    at=$(panel_at "${hiddev[i]}")
    phys=usb-vhci_hcd.0-$((i + 1))/input0
    expect "id of panel $i" "$(field ".panels[$at].usb_id")" "${ids[i]}"
    expect "id in the kernel" "$(sysfs "${hiddev[i]}" HID_ID)" \
        "0003:0000${ids[i]%:*}:0000${ids[i]#*:}"
    expect "phys" "$(field ".panels[$at].phys")" "$phys"
    expect "phys in the kernel" "$(sysfs "${hiddev[i]}" HID_PHYS)" "$phys"
    # What is called "Pen" is passed over as an event node, too.
    ((i != 3)) || { expect "event node" "$(field ".panels[$at].event_node")" null && continue; }
    expect "event node" "$(field ".panels[$at].event_node")" "${event[i]}"
    expect "its phys" "$(</sys/class/input/"${event[i]##*/}"/device/phys)" "$phys"
    expect "its phys in the list of devices" "$(listed_phys "${event[i]}")" "$phys"
done
