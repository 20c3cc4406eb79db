#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Regenerates docs/RECIPES.md's table of how EAP connects end: runs scripts/radio-lab/outcomes.sh
# in the radio lab's enterprise layout, RUNS times a case (default 10), on both supplicant builds
# and both clocks, and writes the counts between the page's outcome-survey markers.
#   outcome-survey.sh [RUNS]
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-10}
cmake -S . -B build -G Ninja -DTESMIR_BUILD_TOOLS=ON >/dev/null
cmake --build build --target tesmir-recipes >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work" "$work.table"' EXIT
columns=()
for build in device desktop; do
    for clock in simulated real; do
        # The lab's console ends its lines with a carriage return too.
        scripts/radio-lab.sh run -t 1800 -s "$build" -c "$clock" -a enterprise -- \
            scripts/radio-lab/outcomes.sh build/bin/tesmir-recipes "$runs" |
            tr -d '\r' >"$work/$build-$clock"
        columns+=("$build-$clock")
    done
done
{
    echo "<!-- outcome-survey begin: scripts/outcome-survey.sh writes this table -->"
    echo "$runs runs a case, $(wpa_supplicant -v | sed -n 's/^wpa_supplicant \(v[0-9.]*\).*/\1/p')."
    echo
    printf '| Case | Outcome |'
    printf ' %s |' "${columns[@]}"
    printf '\n|---|---|'
    printf -- '---|%.0s' "${columns[@]}"
    echo
    cut -f1,2 "${columns[@]/#/$work/}" | sort -u | while IFS=$'\t' read -r case outcome; do
        printf '| %s | `%s` |' "$case" "$outcome"
        for column in "${columns[@]}"; do
            count=$(awk -F'\t' -v c="$case" -v o="$outcome" '$1 == c && $2 == o { print $3 }' \
                "$work/$column")
            printf ' %s |' "${count:-0}"
        done
        echo
    done
    echo "<!-- outcome-survey end -->"
} >"$work.table"
python3 - "$work.table" docs/RECIPES.md <<'PY'
import re, sys
table = open(sys.argv[1]).read()
page = open(sys.argv[2]).read()
page, n = re.subn(r"<!-- outcome-survey begin.*?<!-- outcome-survey end -->\n", lambda _: table, page,
                  flags=re.S)
if n != 1:
    sys.exit("outcome-survey: docs/RECIPES.md has no outcome-survey markers")
open(sys.argv[2], "w").write(page)
PY
