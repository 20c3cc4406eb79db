#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Regenerates docs/RECIPES.md's tables of how EAP connects end and how roams are told: runs
# scripts/radio-lab/outcomes.sh in the radio lab's enterprise layout and radio-lab/roams.sh in its
# roaming layout, RUNS times a case (default 30), on both supplicant builds and both clocks, and
# writes the counts between the page's outcome-survey and roam-survey markers.
#   outcome-survey.sh [RUNS]
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-30}
cmake -S . -B build -G Ninja -DTESMIR_BUILD_TOOLS=ON >/dev/null
cmake --build build --target tesmir-recipes >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Runs |script| in |layout| on both builds and clocks and writes its counts between the page's
# |marker| markers: layout script marker first-column second-column
survey() {
    local layout=$1 script=$2 marker=$3 first=$4 second=$5 columns=() build clock
    for build in device desktop; do
        for clock in simulated real; do
            # The lab's console ends its lines with a carriage return too.
            scripts/radio-lab.sh run -t 1800 -s "$build" -c "$clock" -a "$layout" -- \
                "$script" build/bin/tesmir-recipes "$runs" |
                tr -d '\r' >"$work/$marker-$build-$clock"
            columns+=("$build-$clock")
        done
    done
    {
        echo "<!-- $marker begin: scripts/outcome-survey.sh writes this table -->"
        echo "$runs runs a case, $(wpa_supplicant -v | sed -n 's/^wpa_supplicant \(v[0-9.]*\).*/\1/p')."
        echo
        printf '| %s | %s |' "$first" "$second"
        printf ' %s |' "${columns[@]}"
        printf '\n|---|---|'
        printf -- '---|%.0s' "${columns[@]}"
        echo
        cut -f1,2 "${columns[@]/#/$work/$marker-}" | sort -u | while IFS=$'\t' read -r case said; do
            # shellcheck disable=SC2016 # Markdown's backquotes
            printf '| %s | `%s` |' "$case" "$said"
            for column in "${columns[@]}"; do
                count=$(awk -F'\t' -v c="$case" -v o="$said" '$1 == c && $2 == o { print $3 }' \
                    "$work/$marker-$column")
                printf ' %s |' "${count:-0}"
            done
            echo
        done
        echo "<!-- $marker end -->"
    } >"$work/$marker.table"
    python3 - "$work/$marker.table" docs/RECIPES.md "$marker" <<'PY'
import re, sys
table = open(sys.argv[1]).read()
page = open(sys.argv[2]).read()
marker = re.escape(sys.argv[3])
page, n = re.subn(r"<!-- %s begin.*?<!-- %s end -->\n" % (marker, marker), lambda _: table, page,
                  flags=re.S)
if n != 1:
    sys.exit("outcome-survey: docs/RECIPES.md has no %s markers" % sys.argv[3])
open(sys.argv[2], "w").write(page)
PY
}

survey enterprise scripts/radio-lab/outcomes.sh outcome-survey Case Outcome
survey roaming scripts/radio-lab/roams.sh roam-survey Roam Told
