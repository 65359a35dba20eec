# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
#
# What ./demo and ./check need on a fresh Debian 12, how they get it, and how they build. To be
# sourced.

log_folder=$(mktemp -d)
trap 'rm -rf "$log_folder"' EXIT

stop() {
    echo "${0##*/}: $*" >&2
    exit 1
}

step() {
    printf '\n== %s\n' "$*"
}

as_root() {
    if ((EUID == 0)); then
        "$@"
    else
        command -v sudo >/dev/null || stop "needs to be root, or sudo, to run: $*"
        sudo "$@"
    fi
}

# Installs those of the named packages that are missing.
need() {
    command -v apt-get >/dev/null || stop "needs apt-get to install: $*"
    local package missing=()
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    ((${#missing[@]})) || return 0

    step "installing ${missing[*]}"
    as_root apt-get update -qq || stop "cannot update the package lists"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null || stop "cannot install: ${missing[*]}"
}

# To build the library, the tool and the simulator.
need_build_packages() {
    need g++ cmake ninja-build pkg-config libcli11-dev nlohmann-json3-dev libinih-dev \
        libx11-dev libxrandr-dev
}

# To test them as well.
need_test_packages() {
    need git python3 libgtest-dev clang-14 clang libclang-rt-14-dev clang-format-14 \
        clang-tidy-14 shellcheck abigail-tools
}

# To test them on a real X server.
need_x_packages() {
    need xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils
}

# To test them on a real kernel.
need_kernel_packages() {
    need qemu-system-x86 busybox-static cpio jq xz-utils e2fsprogs systemd udev kmod psmisc procps
}

# Configures a preset and builds it, or the named targets of it.
build() {
    local preset=$1 target=()
    shift
    (($# == 0)) || target=(--target "$@")
    cmake --preset "$preset" >"$log_folder/configure-$preset.log" 2>&1 || {
        cat "$log_folder/configure-$preset.log" >&2
        stop "cannot configure the build '$preset'"
    }
    grep -E '^-- (left out|zelkora)' "$log_folder/configure-$preset.log" | sed 's/^-- //'
    cmake --build --preset "$preset" "${target[@]}" >"$log_folder/build-$preset.log" 2>&1 || {
        tail -n 60 "$log_folder/build-$preset.log" >&2
        stop "cannot build '$preset'"
    }
}
