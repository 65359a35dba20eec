# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
# shellcheck disable=SC2034,SC2154  # the variables are for the scenarios, or come from guest.sh
#
# What scenarios with a serial panel share; sourced inside the guest, behind guest.sh. The host's end
# of the line is ttyS1.

readonly panel_list=/opt/.touch_panel/sertp.conf

# How a port is set up for commands, as `stty -g` tells it: raw, 0x8BD is 9600 baud, 8 data bits,
# receiver on, modem lines ignored; of the control characters only VMIN is not 0.
set_up=0:0:8bd:0:0:0:0:0:0:0:1$(printf ':0%.0s' {1..25})

# Plugs panels in, the serial one at the other end of ttyS1: not under a name that a search for
# panels looks at, or it would find the host there.
attach_with_line() {  # DESCRIPTION...
    [[ -e /dev/panel-end ]] || mv /dev/ttyS2 /dev/panel-end
    attach --line ttyS1=/dev/panel-end "$@"
}

# Plugs all of them out.
detach() {
    local input=${usbip[1]} process=$usbip_PID
    exec {input}>&-
    wait "$process"
}

install_daemons() {
    local number
    for number in 1 2; do
        cp "$ZELKORA_BUILD/attach-daemon" /usr/bin/vastrel$number
    done
}

line_settings() {
    stty -F /dev/ttyS1 -g
}
