# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# A refresh from end to end under real systemd and udev: the files it leaves start the panel's
# daemon, the next one stops the daemon, asks the panel and starts it again, and udev gives the port
# the mode of the rule and systemd the daemon.
# machine: serial systemd
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../serial_panels.sh"

right_time=85
service=vastrel1@ttyS1.service
rule=/etc/udev/rules.d/10-serialtouch.rules

daemon() {
    pgrep -x vastrel1 || true
}

install_name_list "Virtual Resistive"
install_daemons
printf '%s\n' '#!/bin/sh' 'modprobe morlex' '/usr/bin/vastrel2 -morlex --daemon /dev/ttyS9' \
    'exit 0' >/etc/rc.local
attach_with_line serial,port=ttyS1
expect "mode of the port" "$(stat -c %a /dev/ttyS1)" 660

# The library starts the daemon before it writes the unit; zelkoractl starts it once more.
zelkoractl serial refresh
expect "exit code" "$code" 0
expect_match "the panel" "$output" "resistive-serial +/dev/ttyS1 +- +V1.2"
expect_match "the first start fails" "$errors" "Unit $service not found"
expect "unit file" "$(<"/etc/systemd/system/vastrel1@.service")" "[Unit]
Description=attach serial touch screen

[Service]
Type=simple
ExecStart=/usr/bin/vastrel1 -morlex /dev/%I"
expect "rule" "$(<$rule)" 'ACTION=="add|change", SUBSYSTEM=="tty|pnp", KERNEL=="ttyS1", MODE:="0777", \
RUN+="/sbin/modprobe morlex", \
TAG+="systemd", ENV{SYSTEMD_WANTS}+="vastrel1@%k.service"'
expect "boot script" "$(</etc/rc.local)" '#!/bin/sh
modprobe morlex
/usr/bin/vastrel1 -morlex --daemon /dev/ttyS1
exit 0'
first=$(systemctl show -P MainPID "$service")
expect "the daemon" "$(daemon)" "$first"
expect "its command" "$(tr '\0' ' ' <"/proc/$first/cmdline")" \
    "/usr/bin/vastrel1 -morlex /dev/ttyS1 "

# The daemon takes what the controller says.
zelkoractl set 0 right-time=30
expect "exit code while the daemon runs" "$code" 1
expect_match "message" "$errors" "/dev/ttyS1: panel 0 cannot be opened"
expect "right-time in the controller" "$(bench value 0 $right_time)" 4

# A rule that is there is the administrator's.
echo "# mine" >>$rule
zelkoractl --debug serial refresh
expect "exit code" "$code" 0
expect_match "the daemon is seen" "$errors" "pid=$first"
expect_match "it is stopped" "$errors" "DisableRS232---WEXITSTATUS s=0"
expect_match "the panel is asked" "$errors" "GetFirmware FW = V1.2"
second=$(systemctl show -P MainPID "$service")
expect "the daemon" "$(daemon)" "$second"
[[ $second != "$first" ]] || fail "the daemon is the old one"
expect "last line of the rule" "$(tail -n 1 $rule)" "# mine"

zelkoractl serial disable 0
expect "exit code" "$code" 0
expect "the daemon" "$(daemon)" ""
expect "the service" "$(systemctl is-active "$service" || true)" inactive
zelkoractl set 0 right-time=30
expect "exit code without the daemon" "$code" 0
expect "right-time in the controller" "$(bench value 0 $right_time)" 30

# What udev makes of the rule, and systemd of what udev says.
udevadm control --reload
udevadm trigger --settle /dev/ttyS1
expect "mode of the port" "$(stat -c %a /dev/ttyS1)" 777
expect_match "properties of the port" "$(udevadm info /dev/ttyS1)" "SYSTEMD_WANTS=$service"
zelkoractl serial enable 0
expect "exit code" "$code" 0
expect "the service" "$(systemctl is-active "$service")" active

# What the boot script does where there is no systemd: that daemon is stopped by its name, too.
systemctl stop "$service"
grep vastrel /etc/rc.local | sh
expect "its command" "$(tr '\0' ' ' <"/proc/$(daemon)/cmdline")" \
    "/usr/bin/vastrel1 -morlex --daemon /dev/ttyS1 "
zelkoractl serial disable 0
expect "exit code" "$code" 0
expect "the daemon" "$(daemon)" ""
