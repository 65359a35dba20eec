# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# Five controllers of all kinds, one more than the library's table holds. Four are listed and take
# settings; the fifth is not sent a single command, whichever it is.
source "$(dirname "$0")/../guest.sh"

frequency=88

install_name_list "Virtual Resistive"
install_pct_name_list "Virtual PCT"
attach pct8753,sn=8899AABBCCDDEEFF resistive,id=3A4C:1688 pct8752,sn=7766554433221100 \
    resistive,id=3B17:8888 pct8753,sn=0011223344556677
panels=(0 1 2 3 4)
resistive=(1 3)
pct=(0 2 4)

zelkoractl list --json
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" 4
expect_match "hint" "$(field '.hints[]')" "holds 4 panels; any further ones are not listed"
table=$output
left_out=
for i in "${panels[@]}"; do
    [[ -z $(panel_at "${hiddev[i]}") ]] || continue
    [[ -z $left_out ]] || fail "panels $left_out and $i are both missing"
    left_out=$i
done
expect_match "the fifth" "$left_out" '^[0-4]$'
expect "commands sent to it" "$(frame_count "$left_out")" 0

for i in "${panels[@]}"; do
    ((i != left_out)) || continue
    output=$table
    zelkoractl set "$(panel_at "${hiddev[i]}")" frequency=$((1000 + i))
    expect "exit code" "$code" 0
done

for i in "${resistive[@]}"; do
    ((i != left_out)) || continue
    expect "frequency of panel $i" "$(bench permanent "$i" $frequency)" $((1000 + i))
    read_record .restpbin "usb-vhci_hcd.0-$((i + 1))/input0"
done
for i in "${pct[@]}"; do
    ((i != left_out)) || continue
    read_record .pctpbin "usb-vhci_hcd.0-$((i + 1))/input0"
    expect "frequency of panel $i" "$(payload_bytes 22 2)" $((1000 + i))
done

# The same four are there, and nothing happened to the fifth.
zelkoractl list --json
expect "the same panels" "$(field '.panels[].phys' | xargs)" \
    "$(jq -r '.panels[].phys' <<<"$table" | xargs)"
expect "records" "$(cat $store/.pctpbin $store/.restpbin | wc -c)" $((4 * 347))
expect "commands sent to panel $left_out" "$(frame_count "$left_out")" 0

# With one of the four gone there is room.
bench unplug $(((left_out + 1) % 5))
zelkoractl list --json
expect "panels" "$(field '.panels | length')" 4
expect_match "panel $left_out is listed" "$(panel_at "${hiddev[left_out]}")" '^[0-3]$'
