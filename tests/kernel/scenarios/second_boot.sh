# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# Settings of a panel of each kind are changed and kept, then the power is cut. At the second boot
# everything is found again from the files: the panels and their records, the settings to go back
# to, and the serial panel with its daemon, which nobody has to search for again.
# machine: serial systemd two-boots
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../serial_panels.sh"

usb=0 pct=1 serial=2  # in the order of attachment
right_time=85 frequency=88

# Not on the disk of the machine: what its controllers hold when the power goes.
memories=/run/results/memories

# The values that a resistive controller holds without power, as keys of a description.
memory_of() {  # PANEL
    local address value
    for ((address = 0; address < 128; address++)); do
        echo "permanent $1 $address" >&"${usbip[1]}"
        read -r value <&"${usbip[0]}"
        printf ',word%d=%d' $address "$value"
    done
}

attach_panels() {  # MEMORY-OF-THE-USB-PANEL MEMORY-OF-THE-SERIAL-PANEL
    attach_with_line "resistive$1" pct8753,sn=0011223344556677 "serial,port=ttyS1$2"
}

# What is listed, and under which numbers.
find_panels() {
    zelkoractl list --json
    expect "exit code" "$code" 0
    expect "panels" "$(field '[.panels[].node] | sort | join(" ")')" \
        "/dev/ttyS1 ${hiddev[usb]} ${hiddev[pct]}"
    usb_panel=$(panel_at "${hiddev[usb]}")
    pct_panel=$(panel_at "${hiddev[pct]}")
    serial_panel=$(panel_at /dev/ttyS1)
    expect "firmware of the serial panel" "$(field ".panels[$serial_panel].firmware")" V1.2
    expect "serial number" "$(field ".panels[$pct_panel].serial_number")" 0011223344556677
}

# From here on only what somebody syncs reaches the disk, however long the scenario takes.
hold_back_writes() {
    sync
    mount /dev/vda /mnt
    mount -o remount,commit=1000,noauto_da_alloc /mnt
    umount /mnt
    echo 0 >/proc/sys/vm/dirty_writeback_centisecs
}

control() {  # COMMAND...
    zelkoractl "$@"
    expect "exit code" "$code" 0
}

if ((${boot:?} == 1)); then
    install_name_list "Virtual Resistive"
    echo "Virtual PCT" >/opt/.touch_panel/manuflist.conf
    install_daemons
    hold_back_writes
    attach_panels "" ""
    control serial refresh
    find_panels
    control serial disable "$serial_panel"

    control set "$usb_panel" frequency=1500
    control keep "$usb_panel"
    control set "$usb_panel" frequency=700
    control set "$serial_panel" right-time=30
    control keep "$serial_panel"
    control set "$serial_panel" right-time=60
    control set "$pct_panel" frequency=1600 click-mode=touch
    control keep "$pct_panel"
    control set "$pct_panel" frequency=800 click-mode=release

    printf '%s\n' "$(memory_of $usb)" "$(memory_of $serial)" "$(bench pos-config $pct)" >$memories
    echo "written last" >/opt/unsynced
    exit
fi

expect "what was written without being synced" "$(cat /opt/unsynced 2>/dev/null || true)" ""

# The rule and the unit start the daemon, before anybody asks for the panel.
for ((i = 0; i < 100; i++)); do
    if pgrep -x vastrel1; then break; fi
    sleep 0.1
done
expect "the service" "$(systemctl is-active vastrel1@ttyS1.service)" active
expect "mode of the port" "$(stat -c %a /dev/ttyS1)" 777

{ read -r usb_memory && read -r serial_memory && read -r pos_config; } <$memories
attach_panels "$usb_memory" "$serial_memory"
[[ $(bench pos-config $pct) != "$pos_config" ]] || fail "a PCT panel keeps what it was sent"
find_panels
expect "what the PCT panel is sent" "$(bench pos-config $pct)" "$pos_config"
expect "frames that the serial panel got" "$(frame_count $serial)" 0

control revert "$usb_panel"
expect "what the USB panel goes back to" "$output" frequency=1500
expect "frequency in the USB panel" "$(bench permanent $usb $frequency)" 1500

control get "$pct_panel" frequency
expect "frequency of the PCT panel" "$output" 800
control revert "$pct_panel"
expect "what the PCT panel goes back to" "$output" $'frequency=1600\nclick-mode=touch'

control serial disable "$serial_panel"
control revert "$serial_panel"
expect "what the serial panel goes back to" "$output" right-time=30
expect "right-time in the serial panel" "$(bench permanent $serial $right_time)" 30
