# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# The virtual serial ports that the other tests stand on answer like real ones: the same panel on a
# real 16550 and on the virtual port, and a node without hardware on both, asked the same, right and
# wrong.
# machine: serial
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../serial_panels.sh"

compare_ports() {  # PORT LEAST-LINES
    diff "/run/real-$1" "/run/virtual-$1" || fail "$1 answers differently: < real, > virtual"
    (($(wc -l <"/run/real-$1") >= $2)) || fail "$1 was asked too little"
    echo "ok: $1 answers alike"
}

attach_with_line serial,port=ttyS1
"$ZELKORA_BUILD/serial-probe" /dev/ttyS1 >/run/real-ttyS1
expect_match "the real panel was asked" "$(frame_count 0)" '^[1-9][0-9]'
"$ZELKORA_BUILD/serial-probe" /dev/ttyS3 >/run/real-ttyS3
# shellcheck disable=SC2016  # for the shell inside
"$ZELKORA_BUILD/zelkora-sim" --panel serial,port=ttyS1 --panel serial,port=ttyS3,no-hardware -- \
    bash -euc 'for port in ttyS1 ttyS3; do
        "$ZELKORA_BUILD/serial-probe" /dev/$port >/run/virtual-$port
    done'
cp /run/real-* /run/virtual-* /run/results
compare_ports ttyS1 90
compare_ports ttyS3 70
