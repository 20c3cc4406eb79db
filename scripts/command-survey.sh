#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Regenerates docs/COMMANDS.md from a real supplicant on nl80211, as devices run it: builds
# tesmir-command-survey and runs it in the radio lab (scripts/radio-lab.sh). Needs no root.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON >/dev/null
cmake --build build --target tesmir-command-survey >/dev/null
version="$(wpa_supplicant -v | sed -n 's/^wpa_supplicant \(v[0-9.]*\).*/\1/p') (Debian package $(
    dpkg-query -W -f='${Version}' wpasupplicant))"
trap 'rm -f docs/COMMANDS.md.new' EXIT
scripts/radio-lab.sh run -- build/tools/tesmir-command-survey "$version" >docs/COMMANDS.md.new
mv docs/COMMANDS.md.new docs/COMMANDS.md
echo "command-survey: wrote docs/COMMANDS.md"
