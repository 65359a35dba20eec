# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# machine: skip-idle
#
# Controllers that neither answer nor stall. The kernel gives up after ten seconds on hiddev, where it
# hides that, and after five on hidraw; the host comes to an end, and knows them again later.
source "$(dirname "$0")/../guest.sh"

beep=86
patience=0 # the clock jumps over waits for the disk too, up to any time-out

# Runs the host and tells how many seconds of the guest's clock it took.
timed() {  # ARGUMENT...
    local begin=$SECONDS
    zelkoractl "$@"
    took=$((SECONDS - begin))
    echo "took $took s"
}

install_name_list "Virtual Resistive"
echo "Virtual PCT" >/opt/.touch_panel/manuflist.conf
attach resistive,firmware=V1.2 pct8753,sn=A102030405060708

timed list --json
expect "panels" "$(field '.panels | length')" 2
resistive=$(panel_at "${hiddev[0]}")

# The query's own letters come back, as from a silent panel, but each request takes ten seconds.
bench fault 0 hangs
timed list --json
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" 2
expect "firmware of the one that hangs" "$(field ".panels[$resistive].firmware")" null
((took >= 30)) || fail "the kernel gave up three requests in $took s"
timed set "$resistive" beep=off
expect "exit code" "$code" 1
expect_match "message" "$errors" "${hiddev[0]}: panel $resistive does not answer"
expect "beep word in the controller" "$(bench value 0 $beep)" 1
bench fault 0 hangs=off

# The search asks a PCT panel again and again before it passes it over.
bench fault 1 hangs
timed list --json
expect "exit code" "$code" 0
expect "panels left" "$(field '.panels[].node')" "${hiddev[0]}"
((took >= 300)) || fail "the search was over in $took s"
timed mode 1 mouse
expect "exit code" "$code" 3
expect_match "message" "$errors" "there is no panel 1"
expect "POS mode in the controller" "$(bench pos-mode 1)" 1
bench fault 1 hangs=off

timed list --json
expect "exit code" "$code" 0
expect "panels" "$(field '.panels | length')" 2
expect "firmware" "$(field '.panels[].firmware' | sort | xargs)" "S8.7.53(r400) V1.2"
timed set "$(panel_at "${hiddev[0]}")" beep=off
expect "exit code" "$code" 0
expect "beep word in the controller" "$(bench value 0 $beep)" 0
