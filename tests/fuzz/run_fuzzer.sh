#!/usr/bin/env bash
# Runs one fuzz target for a fixed time from its seeds, and prints what it reached.
#   run_fuzzer.sh TARGET SEED_DIR WORK_DIR SECONDS
set -euo pipefail
target=$1 seeds=$2 work=$3 seconds=$4
mkdir -p "$work"
log="$work.log"
status=0
"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$work/../$(basename "$target")-" "$work" "$seeds" >"$log" 2>&1 || status=$?
grep -E 'stat::number_of_executed_units|stat::peak_rss_mb|cov: ' "$log" | tail -3
if [ "$status" -ne 0 ]; then
    tail -40 "$log"
fi
exit "$status"
