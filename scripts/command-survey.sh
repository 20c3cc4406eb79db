#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Regenerates docs/COMMANDS.md from a real supplicant on nl80211: builds tesmir-command-survey,
# runs it in the radio lab (scripts/radio-lab.sh) on both supplicant builds, and merges the two
# (scripts/survey_merge.py). Needs no root.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON >/dev/null
cmake --build build --target tesmir-command-survey >/dev/null
version="$(wpa_supplicant -v | sed -n 's/^wpa_supplicant \(v[0-9.]*\).*/\1/p') (Debian package $(
    dpkg-query -W -f='${Version}' wpasupplicant))"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for supplicant in device desktop; do
    scripts/radio-lab.sh run -s "$supplicant" -- build/tools/tesmir-command-survey "$version" \
        >"$work/$supplicant.md"
done
python3 scripts/survey_merge.py "$work/device.md" "$work/desktop.md" >"$work/COMMANDS.md"
mv "$work/COMMANDS.md" docs/COMMANDS.md
echo "command-survey: wrote docs/COMMANDS.md"
