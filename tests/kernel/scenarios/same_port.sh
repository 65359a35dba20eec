# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# The virtual serial port that the other tests stand on answers like a real 16550: the same panel on
# both, asked the same, right and wrong.
# machine: serial
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../serial_panels.sh"

attach_with_line serial,port=ttyS1
"$ZELKORA_BUILD/serial-probe" /dev/ttyS1 | tee /run/real
"$ZELKORA_BUILD/zelkora-sim" --panel serial,port=ttyS1 -- \
    "$ZELKORA_BUILD/serial-probe" /dev/ttyS1 >/run/virtual
expect "differences" "$(diff /run/real /run/virtual || true)" ""
expect_match "the real panel was asked" "$(frame_count 0)" '^[1-9][0-9]'
