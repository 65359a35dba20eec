# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# A panel among the screens of a real X server: the lit ones are listed in order, and the panel is
# mapped to the second.
source "$(dirname "$0")/../guest.sh"

screen=54

# Starts the server and lights two screens side by side; the others stay dark.
start_x() {
    Xorg :0 -config "$here/../desktop/dummy_x.conf" -noreset -nolisten tcp -novtswitch -sharevts \
        -ac -logfile /run/xorg.log &>/run/xorg.output &
    export DISPLAY=:0
    until xrandr --addmode DUMMY1 1280x1024 2>/dev/null; do
        kill -0 $! || fail "Xorg did not start: $(</run/xorg.output)"
        sleep 0.1
    done
    xrandr --output DUMMY0 --mode 1920x1080 --pos 0x0 \
        --output DUMMY1 --mode 1280x1024 --pos 1920x0
}

install_name_list "Virtual Resistive"
attach resistive

zelkoractl screens --json
expect "exit code without a server" "$code" 0
expect "screens without a server" "$(field '.screens | length')" 0

start_x
zelkoractl screens --json
expect "exit code" "$code" 0
expect "screens" "$(field '[.screens[] | "\(.output) \(.width)x\(.height)+\(.x)+\(.y)"] | join(", ")')" \
    "DUMMY0 1920x1080+0+0, DUMMY1 1280x1024+1920+0"

second=$(field '.screens[1].number')
zelkoractl set 0 screen="$second"
expect "exit code" "$code" 0
expect "screen word in the controller" "$(bench value 0 $screen)" "$second"

xrandr --output DUMMY0 --off
zelkoractl screens --json
expect "screens left" "$(field '[.screens[].output] | join(" ")')" DUMMY1
