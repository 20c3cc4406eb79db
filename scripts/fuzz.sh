#!/usr/bin/env bash
# Runs every fuzz target for longer than CI does and prints what each reached.
#   fuzz.sh [SECONDS_PER_TARGET]   (default 300)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-300}
[ "$(id -u)" -eq 0 ] && scripts/install-deps.sh
cmake -S . -B build-fuzz -G Ninja -DTESMIR_FUZZ=ON -DTESMIR_FUZZ_SECONDS="$seconds" \
    -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=OFF >/dev/null
cmake --build build-fuzz
ctest --test-dir build-fuzz -L fuzz -j "$(nproc)" --timeout $((seconds + 120)) -V |
    grep -E 'Test command|number_of_executed_units|cov: |Passed|Failed'
