# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# An 8752 and an 8753 panel at once, each found and used on its hiddev node.
source "$(dirname "$0")/../pct_panels.sh"

install_pct_name_list "Virtual PCT"
attach pct8752 pct8753,sn=0011223344556677
expect_pct_panels "${hiddev[@]}"
