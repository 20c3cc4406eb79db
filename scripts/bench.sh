#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Runs the benchmarks against a real wpa_supplicant it starts itself (the wired lab, for Execute
# and the string helpers; the radio lab on its real clock, for the recipes on both supplicant
# builds), and writes docs/PERFORMANCE.md with its plots. Needs root.
#   bench.sh           full run, writes docs/
#   bench.sh --short   one quick pass (CI): checks that everything builds and runs; writes only
#                      into the build tree and asserts no threshold
#   bench.sh --radio [recipes|roaming|crowd]
#                      runs again only the radio lab's benchmarks (or one of them; roaming: the
#                      recipes in the roaming layout alone), each of which has its baseline in its
#                      own run, and writes the report with the other figures as the last full
#                      run left them in docs/
#   bench.sh --report  writes the report again from the figures in docs/, measuring nothing
set -euo pipefail
cd "$(dirname "$0")/.."

short=0
radio_only=0
[ "${1:-}" = "--short" ] && short=1
[ "${1:-}" = "--radio" ] && radio_only=1
radio_part=${2:-}
report_only=0
[ "${1:-}" = "--report" ] && radio_only=1 && report_only=1
build=build-bench
out=docs
if [ "$short" -eq 1 ]; then
    out=$build/report
fi
mkdir -p "$out"

scripts/install-deps.sh
command -v gnuplot >/dev/null && command -v python3 >/dev/null ||
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends gnuplot-nox python3 >/dev/null
scripts/deb-source.sh benchmark "$build/_deps/benchmark"

echo "== building the benchmarks (and the arm64 library, for its size)"
cmake -S . -B "$build" -G Ninja -DTESMIR_BUILD_BENCH=ON -DTESMIR_BUILD_TESTS=OFF \
    -DTESMIR_BENCHMARK_SOURCE_DIR="$PWD/$build/_deps/benchmark" >/dev/null
cmake --build "$build" >/dev/null
# The report's size section reads the arm64 library, whatever part of the run is repeated.
if [ "$short" -eq 0 ]; then
    scripts/install-deps.sh --arm64 >/dev/null
    cmake -S . -B build-arm64 -G Ninja -DTESMIR_BUILD_TESTS=OFF \
        -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/aarch64-linux-gnu.toolchain.cmake" >/dev/null
    cmake --build build-arm64 --target tesmirwpacliwrapper >/dev/null
fi

if [ "$short" -eq 1 ]; then
    bench_args=(--benchmark_min_time=0.01)
    rounds=20
    b2b_rounds=2
    recipe_rounds=1
    desktop_recipe_rounds=1
    crowd_rounds=2
    churn_listings=5
    isolated_listings=5
    isolation_rounds=20
    held_isolation_rounds=2
else
    bench_args=(--benchmark_min_time=2 --benchmark_repetitions=7 --benchmark_report_aggregates_only=true)
    rounds=3000
    b2b_rounds=16
    recipe_rounds=100
    desktop_recipe_rounds=20
    crowd_rounds=20
    # TESMIR_CHURN_LISTINGS and TESMIR_ISOLATED_LISTINGS shorten a run (about 0.15 s and 0.4 s
    # a listing in the lab); the report says how many each row had.
    churn_listings=${TESMIR_CHURN_LISTINGS:-2000}
    isolated_listings=${TESMIR_ISOLATED_LISTINGS:-2000}
    isolation_rounds=1000
    held_isolation_rounds=60
fi

if [ "$radio_only" -eq 0 ]; then
    echo "== starting a supplicant in a throwaway namespace"
    scripts/supplicant-lab.sh check
    lab=$(mktemp -d /tmp/tesmir-lab.XXXXXX)
    trap 'scripts/supplicant-lab.sh down "$lab"; rm -rf "$lab"' EXIT
    scripts/supplicant-lab.sh up "$lab" >/dev/null
    export TESMIR_LAB_DIR=$lab

    echo "== benchmarks"
    "$build/bench/tesmir_bench" "${bench_args[@]}" --benchmark_out="$out/bench.json" \
        --benchmark_out_format=json
    echo "== latency samples: $rounds rounds interleaved, $b2b_rounds back to back"
    "$build/bench/tesmir_execute_latency" "$rounds" "$b2b_rounds" "$out/execute_latency.csv"
    scripts/supplicant-lab.sh down "$lab"
    rm -rf "$lab"
    trap - EXIT
fi

[ "$report_only" -eq 1 ] ||
    printf '%s\n' "== recipes against a raw listener, radio lab, real clock: $recipe_rounds rounds on the" \
        "   device build, $desktop_recipe_rounds on the desktop build, each both ways"
recipes=()
for supplicant in device desktop; do
    if [ "$radio_part" = crowd ] || [ "$report_only" -eq 1 ]; then
        recipes+=("$supplicant=$out/recipes-$supplicant.csv")
        [ -f "$out/recipes-roaming-$supplicant.csv" ] &&
            recipes+=("$supplicant build, roaming layout=$out/recipes-roaming-$supplicant.csv")
        continue
    fi
    rounds_here=$recipe_rounds
    [ "$supplicant" = desktop ] && rounds_here=$desktop_recipe_rounds
    # The standard layout's tasks, then the roaming layout's (PEAP, FT and full roams).
    for layout in standard roaming; do
        csv=$out/recipes-$supplicant.csv
        label=$supplicant
        if [ "$layout" = roaming ]; then
            csv=$out/recipes-roaming-$supplicant.csv
            label="$supplicant build, roaming layout"
        fi
        if [ "$radio_part" = roaming ] && [ "$layout" = standard ]; then
            recipes+=("$label=$csv")
            continue
        fi
        status=0
        scripts/radio-lab.sh run -s "$supplicant" -c real -a "$layout" -t 5000 -- \
            "$build/bench/tesmir_recipe_latency" "$rounds_here" "$PWD/$build/bin/tesmir-recipes" \
            "$PWD/$build/bench/libtesmir_call_counts.so" >"$csv" || status=$?
        case $status in
        0) recipes+=("$label=$csv") ;;
        77) echo "no radio lab here: the recipes are not measured" && break 2 ;;
        *) echo "the recipe benchmark failed on the $supplicant build ($layout)" >&2 && exit 1 ;;
        esac
    done
done

if [ "$report_only" -eq 0 ] && [ "$radio_part" != roaming ]; then
    echo "== isolating a listing: $isolation_rounds round trips of each design, outside the lab"
    "$build/bench/tesmir_isolation_cost" "$build/bin/tesmir-list-helper" "$isolation_rounds" \
        >"$out/isolation.csv"
fi

[ "$report_only" -eq 1 ] ||
    printf '%s\n' "== the crowd: $crowd_rounds scans and listings, $churn_listings listings per design" \
        "   under churn, $isolated_listings isolated listings per churn, $held_isolation_rounds of" \
        "   each isolation design"
crowds=()
for supplicant in device desktop; do
    [ "${#recipes[@]}" -gt 0 ] || break
    if [ "$radio_part" = recipes ] || [ "$radio_part" = roaming ] || [ "$report_only" -eq 1 ]; then
        crowds+=("$supplicant=$out/crowd-$supplicant.csv")
        continue
    fi
    csv=$out/crowd-$supplicant.csv
    scripts/radio-lab.sh run -s "$supplicant" -c real -a crowd -t 20000 -- bash -c \
        '"$0" cost "$1" && "$5" "$4" "$6" "$TESMIR_LAB_SOCKET" && "$0" churn edge "$2" &&
         "$0" churn flush-all "$(($2 / 4 + 1))" && "$0" isolated edge "$3" "$4" &&
         "$0" isolated flush-all "$3" "$4"' \
        "$build/bench/tesmir_crowd" "$crowd_rounds" "$churn_listings" "$isolated_listings" \
        "$PWD/$build/bin/tesmir-list-helper" "$PWD/$build/bench/tesmir_isolation_cost" \
        "$held_isolation_rounds" >"$csv" ||
        { echo "the crowd benchmark failed on the $supplicant build" >&2 && exit 1; }
    crowds+=("$supplicant=$csv")
done

strip_size() {  # library
    [ -f "$1" ] || { echo 0; return; }
    llvm-strip-14 -o "$1.stripped" "$1" && stat -c %s "$1.stripped"
}
host_size=$(strip_size "$build/libtesmirwpacliwrapper.so")
arm64_size=$(strip_size build-arm64/libtesmirwpacliwrapper.so)

python3 scripts/perf_report.py --bench "$out/bench.json" --latency "$out/execute_latency.csv" \
    --host-size "$host_size" --arm64-size "$arm64_size" \
    --host-lib "$build/libtesmirwpacliwrapper.so" --arm64-lib build-arm64/libtesmirwpacliwrapper.so \
    --recipes "${recipes[@]}" --crowd "${crowds[@]}" --isolation "$out/isolation.csv" --out "$out"
echo "== report: $out/PERFORMANCE.md"
