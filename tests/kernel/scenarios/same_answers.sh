# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# The virtual kernel that the other tests stand on answers like the real one: the same panel on
# both, asked the same, right and wrong, plugged and unplugged.
source "$(dirname "$0")/../guest.sh"

panel=resistive,id=3A4C:8888,firmware=V1.2

# Has the nodes asked, and the panel unplugged half way.
ask() {  # ANSWERS HIDDEV HIDRAW EVENT UNPLUG-COMMAND...
    local answers=$1 probe
    mkfifo "$answers.go"
    "$ZELKORA_BUILD/hid-probe" "$2" "$3" "$4" <"$answers.go" >"$answers" &
    probe=$!
    exec 7>"$answers.go"
    until grep -q "now unplug" "$answers"; do
        kill -0 $probe || return
        sleep 0.1
    done
    "${@:5}"
    exec 7>&-
    wait $probe
}

attach $panel
ask /run/real "${hiddev[0]}" "${hidraw[0]}" "${event[0]}" bench unplug 0
cat /run/real

export -f ask
# shellcheck disable=SC2016  # the shell inside expands it
"$ZELKORA_BUILD/zelkora-sim" --panel $panel -- bash -c 'ask /run/virtual /dev/usb/hiddev0 \
    /dev/hidraw0 /dev/input/event0 "$ZELKORA_BUILD/zelkora-sim" unplug 0'
expect "lines of answers" "$(wc -l </run/virtual)" "$(wc -l </run/real)"

# What is known to differ, as diff tells it: < the real kernel, > the virtual one. Real hidraw
# readers see the replies that hiddev asked for. The rest are transfers of lengths that no host uses.
known='
< hiddev read of 1 byte -> 0
> hiddev read of 1 byte -> EAGAIN
> hiddev read of 1 byte -> EIO
< hidraw read -> 64
> hidraw read -> EAGAIN
< event read of 1 byte -> EINVAL
> event read of 1 byte -> ENODEV
'
expect "other differences" "$(diff /run/real /run/virtual | grep '^[<>]' | grep -vxF "$known")" ""
