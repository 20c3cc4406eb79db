#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Regenerates docs/COMMANDS.md from a real supplicant on nl80211: builds tesmir-command-survey,
# runs it in the radio lab (scripts/radio-lab.sh) three times on each supplicant build, with the
# standard access points and then the hostile ones (SSIDs), and merges the runs
# (scripts/survey_merge.py): what differs between runs of one build is not told as a difference
# of builds. Needs no root.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON >/dev/null
cmake --build build --target tesmir-command-survey >/dev/null
version="$(wpa_supplicant -v | sed -n 's/^wpa_supplicant \(v[0-9.]*\).*/\1/p') (Debian package $(
    dpkg-query -W -f='${Version}' wpasupplicant))"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
runs=3
for supplicant in device desktop; do
    for run in $(seq "$runs"); do
        scripts/radio-lab.sh run -s "$supplicant" -- build/tools/tesmir-command-survey \
            "$version" >"$work/$supplicant-$run.md"
        echo >>"$work/$supplicant-$run.md"
        scripts/radio-lab.sh run -s "$supplicant" -a hostile -- \
            build/tools/tesmir-command-survey --ssids >>"$work/$supplicant-$run.md"
    done
done
python3 scripts/survey_merge.py --device "$work"/device-*.md --desktop "$work"/desktop-*.md \
    >"$work/COMMANDS.md"
mv "$work/COMMANDS.md" docs/COMMANDS.md
echo "command-survey: wrote docs/COMMANDS.md"
