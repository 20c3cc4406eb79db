#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Unpacks Debian's source of PACKAGE (at VERSION, when given) into DEST, patches applied: for what
# must be built differently from Debian's binaries (Google Benchmark against libc++, wpa_supplicant
# as devices build it). Adds a deb-src entry mirroring the Debian deb entry when there is none,
# which needs root the first time.
#   deb-source.sh PACKAGE DEST [VERSION]
set -euo pipefail
package=${1:?usage: deb-source.sh PACKAGE DEST [VERSION]}
dest=${2:?usage: deb-source.sh PACKAGE DEST [VERSION]}
version=${3:-}
[ -f "$dest/.tesmir-unpacked" ] && exit 0

sources=/etc/apt/sources.list.d/debian.sources
mirror=/etc/apt/sources.list.d/tesmir-debian-src.sources
if ! grep -rqs '^Types:.*deb-src\|^deb-src' /etc/apt/sources.list /etc/apt/sources.list.d/; then
    [ -f "$sources" ] || { echo "deb-source: no $sources to mirror" >&2; exit 1; }
    echo "deb-source: adding $mirror, deb-src entries mirroring $sources"
    sed 's/^Types: deb$/Types: deb-src/' "$sources" >"$mirror"
    apt-get update -qq || true
fi
command -v dpkg-source >/dev/null || DEBIAN_FRONTEND=noninteractive apt-get install -y -qq dpkg-dev >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$work" && apt-get source -qq "$package${version:+=$version}" >/dev/null 2>&1) || true
src=$(find "$work" -maxdepth 1 -mindepth 1 -type d | head -1)
[ -n "$src" ] || { echo "deb-source: apt-get source $package gave nothing" >&2; exit 1; }
mkdir -p "$(dirname "$dest")"
rm -rf "$dest"
mv "$src" "$dest"
: >"$dest/.tesmir-unpacked"
echo "deb-source: $package source in $dest"
