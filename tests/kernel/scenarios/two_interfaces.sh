# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# A panel with a pen on a second USB interface of the same name, looked for on hidraw nodes, too: it
# is listed once and with its own event node. What the pen costs is in docs/KNOWN-LIMITS.md.
source "$(dirname "$0")/../guest.sh"

mkdir -p /opt/.touch_panel
echo "Virtual PCT" >/opt/.touch_panel/manuflist.conf
attach pct8753,pen,sn=0102030405060708
printf '[switches]\nhidraw = on\n' >/run/hidraw-on.ini
printf '[switches]\nhidraw = off\n' >/run/hidraw-off.ini

# Leaves the time that the host took in milliseconds in `took`.
list_panels() {  # CONFIG-FILE
    local begin=${EPOCHREALTIME/[.,]/}
    zelkoractl list --json --debug --config "$1"
    took=$(((${EPOCHREALTIME/[.,]/} - begin) / 1000))
    expect "exit code" "$code" 0
    expect "panels" "$(field '.panels | length')" 1
    expect "node" "$(field '.panels[0].node')" "${hiddev[0]}"
    expect "serial number" "$(field '.panels[0].serial_number')" 0102030405060708
    expect "event node" "$(field '.panels[0].event_node')" "${event[0]}"
}

list_panels /run/hidraw-off.ini
without=$took
seen=$(frame_count 0)

list_panels /run/hidraw-on.ini
expect_match "the pen is taken for a panel" "$errors" "Device2 : ${pen_hidraw[0]} phys:[^ ]*/input1 "
expect_match "until it does not answer" "$errors" "SetMySN WriteParamas HidRaw:1 status=0"
echo "list took $without ms without hidraw nodes, $took ms with them"
((took > without)) || fail "the pen cost no time: docs/KNOWN-LIMITS.md is out of date"

# The same commands as before, and none of those that were meant for the pen.
frames=$(bench frames 0)
expect "commands that reached the panel" "${frames%% *}" $((2 * seen))
expect "records" "$(find /opt/.touch_panel -name '.pct*' | wc -l)" 2
