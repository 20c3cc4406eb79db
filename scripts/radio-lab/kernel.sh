#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Builds the radio lab's User-Mode Linux kernel from Debian's linux-source-6.1, once: the binary
# is kept as BUILD_DIR/linux-<key>, where the key covers uml.config and the source's version,
# and is reused until either changes. Prints the binary's path.
#   kernel.sh BUILD_DIR
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
out=${1:?usage: kernel.sh BUILD_DIR}
fragment=$here/uml.config
tarball=/usr/src/linux-source-6.1.tar.xz
[ -f "$tarball" ] || {
    echo "radio-lab: $tarball is missing (scripts/install-deps.sh installs linux-source-6.1)" >&2
    exit 1
}

mkdir -p "$out"
# Two radio tests may start at once: one builds, the other waits for it.
exec 9>"$out/.kernel.lock"
flock 9

key=$( (cat "$fragment"; dpkg-query -W -f='${Version}' linux-source-6.1) | sha256sum | cut -c1-12)
kernel=$out/linux-$key
if [ -x "$kernel" ]; then
    echo "$kernel"
    exit 0
fi

src=$out/linux-src
rm -rf "$src"
mkdir -p "$src"
echo "radio-lab: building the UML kernel (a few minutes, once)" >&2
tar -xJf "$tarball" -C "$src" --strip-components=1
{
    make -C "$src" ARCH=um allnoconfig
    (cd "$src" && ARCH=um scripts/kconfig/merge_config.sh -m .config "$fragment")
    make -C "$src" ARCH=um olddefconfig
} >"$out/kernel-config.log" 2>&1
# A symbol whose dependencies are not met is dropped without a word: insist on every one.
missing=$(grep -E '^CONFIG_[A-Z0-9_]+=y' "$fragment" | while read -r line; do
    grep -qx "$line" "$src/.config" || echo "$line"
done)
if [ -n "$missing" ]; then
    echo "radio-lab: the kernel configuration lacks:" $missing >&2
    exit 1
fi
make -C "$src" ARCH=um -j "$(nproc)" linux >"$out/kernel-build.log" 2>&1 || {
    tail -30 "$out/kernel-build.log" >&2
    exit 1
}
rm -f "$out"/linux-????????????
cp "$src/linux" "$kernel"
rm -rf "$src"
echo "$kernel"
