#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Unpacks Debian's arm64 libc++, libc++abi and libunwind into DEST (inside the build tree).
# They cannot be installed beside the amd64 ones: apt would remove the host's libc++.
# Needs arm64 enabled in dpkg (scripts/install-deps.sh --arm64 does that).
#   arm64-sysroot.sh DEST
set -euo pipefail
dest=${1:?usage: arm64-sysroot.sh DEST}
packages=(libc++1-14 libc++-14-dev libc++abi1-14 libc++abi-14-dev libunwind-14 libunwind-14-dev)

if [ -f "$dest/.complete" ]; then
    exit 0
fi
mkdir -p "$dest/debs"
(
    cd "$dest/debs"
    apt-get download "${packages[@]/%/:arm64}" >/dev/null
)
for deb in "$dest"/debs/*.deb; do
    dpkg -x "$deb" "$dest"
done
touch "$dest/.complete"
echo "arm64-sysroot: libc++ for arm64 unpacked in $dest"
