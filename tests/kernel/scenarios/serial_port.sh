# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# A serial panel on a real 16550: the search finds it through the kernel's own log, passes over the
# console and a port without hardware, and its settings are read and changed over the line. A panel
# with firmware that is not supported is refused.
# machine: serial
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../serial_panels.sh"

report_mode=51
right_time=85

install_name_list "Virtual Resistive"
attach_with_line serial,port=ttyS1,firmware=V2.1
expect_match "the kernel names the port" "$(dmesg)" "ttyS1 at I/O 0x2f8 .* is a 16550A"
# The kernel is silent about ports that have a node and no hardware.
echo "ttyS3 is named here" >/dev/kmsg
before=$(line_settings)
expect_match "the port is not set up for commands" "$before" "^500:5:cbd:8a3b:"

zelkoractl list --json
expect "panels before a search" "$(field '.panels | length')" 0
expect "frames so far" "$(frame_count 0)" 0

# There is no systemd here: the daemon does not start, and the search goes on.
zelkoractl --debug serial refresh
expect "exit code" "$code" 0
expect_match "the panel" "$output" "resistive-serial +/dev/ttyS1 +- +V2.1"
for port in ttyS0 ttyS1 ttyS3; do
    expect_match "$port is asked" "$errors" "filename /dev/$port"
done
expect "the panel is asked who is there, and for its firmware" "$(bench frames 0)" \
    "2 | 01 5A 5A 0D | 01 4F 49 0D"
expect "the list of panels" "$(<$panel_list)" "SerialDevice1=ttyS1
FW1=V2.1"
expect "the port is set up" "$(line_settings)" "$set_up"
expect "and so is the console, for good" "$(stty -F /dev/ttyS0 -g)" "$set_up"
expect_match "ttyS3 has no hardware" "$(stty -F /dev/ttyS3 -g 2>&1 || true)" "Input/output error"
[[ ! -e /opt/.touch_panel/tty.log ]] || fail "the copy of the kernel log is left"

zelkoractl list --json
expect "panels" "$(field '.panels | length')" 1
expect "node" "$(field '.panels[0].node')" /dev/ttyS1
expect "firmware" "$(field '.panels[0].firmware')" V2.1

zelkoractl get 0 right-time
expect "right-time of the controller" "$output" 4

# A setting is mirrored in the list when its key stands there: a host adds it.
echo SerialDeviceRightTime1=4 >>$panel_list
stty -F /dev/ttyS1 sane 38400
zelkoractl set 0 right-time=30 report-mode=2
expect "exit code" "$code" 0
expect "right-time in the controller" "$(bench value 0 $right_time)" 30
expect "and the one that survives a reset" "$(bench permanent 0 $right_time)" 30
expect "report mode in the controller" "$(bench value 0 $report_mode)" 2
expect "the list of panels" "$(<$panel_list)" "SerialDevice1=ttyS1
FW1=V2.1
SerialDeviceRightTime1=30"
expect "the port is set up again" "$(line_settings)" "$set_up"
zelkoractl get 0 report-mode
expect "report mode" "$output" 2

bench unplug 0
zelkoractl get 0 right-time
expect "exit code without a panel" "$code" 1
expect_match "message" "$errors" "/dev/ttyS1: panel 0 "

detach
attach_with_line serial,port=ttyS1,firmware=V3.0
refused="Driver dose not support this device,"
zelkoractl --debug get 0 right-time
expect "exit code for firmware V3.0" "$code" 1
expect_match "it is refused" "$errors" "$refused"
zelkoractl --debug serial refresh
expect "exit code" "$code" 0
expect "it is asked for its firmware four times" \
    "$(grep -c "GetFirmware FW = V3.0" <<<"$errors")" 4
expect "the list keeps what it held" "$(sed -n 2p $panel_list)" FW1=V2.1

# The kernel log forgets the ports in time.
dmesg >/run/results/dmesg.log
dmesg --clear
zelkoractl --debug serial refresh
expect "exit code" "$code" 0
expect "ports asked" "$(grep -c "filename /dev/" <<<"$errors" || true)" 0
