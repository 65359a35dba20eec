# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# An 8752 and an 8753 panel at once, each found and used on its hidraw node: the kernel makes no
# hiddev node for a device that has no application of its own.
source "$(dirname "$0")/../guest.sh"
source "$(dirname "$0")/../pct_panels.sh"

install_pct_name_list "Virtual PCT"
attach pct8752,nodes=hidraw pct8753,nodes=hidraw,sn=0011223344556677
expect "hiddev nodes" "$(find /dev -name 'hiddev*')" ""
expect_pct_panels "${hidraw[@]}"
