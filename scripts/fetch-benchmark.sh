#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Unpacks Debian's source of Google Benchmark into DEST, to build it with libc++ (Debian's prebuilt
# libbenchmark-dev is built against libstdc++). Adds a deb-src entry mirroring the Debian deb entry
# when there is none. Needs root the first time.
#   fetch-benchmark.sh DEST
set -euo pipefail
dest=${1:?usage: fetch-benchmark.sh DEST}
[ -f "$dest/CMakeLists.txt" ] && exit 0

sources=/etc/apt/sources.list.d/debian.sources
mirror=/etc/apt/sources.list.d/tesmir-debian-src.sources
if ! grep -rqs '^Types:.*deb-src\|^deb-src' /etc/apt/sources.list /etc/apt/sources.list.d/; then
    [ -f "$sources" ] || { echo "fetch-benchmark: no $sources to mirror" >&2; exit 1; }
    echo "fetch-benchmark: adding $mirror, deb-src entries mirroring $sources"
    sed 's/^Types: deb$/Types: deb-src/' "$sources" >"$mirror"
    apt-get update -qq || true
fi
command -v dpkg-source >/dev/null || DEBIAN_FRONTEND=noninteractive apt-get install -y -qq dpkg-dev >/dev/null

work=$(mktemp -d)
(cd "$work" && apt-get source -qq benchmark >/dev/null 2>&1)
src=$(find "$work" -maxdepth 1 -mindepth 1 -type d -name 'benchmark-*' | head -1)
[ -n "$src" ] || { echo "fetch-benchmark: apt-get source benchmark gave nothing" >&2; exit 1; }
mkdir -p "$(dirname "$dest")"
rm -rf "$dest"
mv "$src" "$dest"
rm -rf "$work"
echo "fetch-benchmark: Google Benchmark source in $dest"
