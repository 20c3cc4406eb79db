#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Installs, from Debian packages, everything the build, the tests and the demo need.
# Safe to run again: packages already present are left alone.
#   install-deps.sh [--arm64]    --arm64 adds the cross build and its emulated tests
set -euo pipefail

want=(
    clang lld llvm-14 libc++-dev libc++abi-dev libclang-rt-14-dev
    clang-format clang-tidy
    cmake ninja-build
    libwpa-client-dev android-liblog-dev
    googletest
    wpasupplicant hostapd iproute2
    linux-source-6.1 flex bison bc make gcc libc6-dev wireless-regdb
    blueprint-tools binutils file procps g++
    golang-go golang-android-soong-dev golang-github-google-blueprint-dev
    golang-github-golang-protobuf-1-3-dev
    dpkg-dev pkg-config libnl-3-dev libnl-genl-3-dev libnl-route-3-dev libssl-dev
)

refresh=0
if [ "${1:-}" = "--arm64" ]; then
    if ! dpkg --print-foreign-architectures | grep -qx arm64; then
        echo "install-deps: adding the arm64 architecture to dpkg, for the cross build's libraries"
        dpkg --add-architecture arm64
        refresh=1
    fi
    want+=(qemu-user libc6-dev:arm64 libgcc-12-dev:arm64 libwpa-client-dev:arm64
        android-liblog-dev:arm64)
fi

missing=()
for p in "${want[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ "${#missing[@]}" -gt 0 ] || [ "$refresh" -eq 1 ]; then
    export DEBIAN_FRONTEND=noninteractive
    # An unreachable third-party source must not stop us: Debian's own lists are what we need.
    apt-get update -qq || true
fi
if [ "${#missing[@]}" -gt 0 ]; then
    echo "install-deps: installing ${missing[*]}"
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
echo "install-deps: packages ready"
