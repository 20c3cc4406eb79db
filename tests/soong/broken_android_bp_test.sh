#!/usr/bin/env bash
# The Soong check can fail: broken copies of Android.bp, each rejected with Soong's own message.
#   broken_android_bp_test.sh WORK_DIR
set -uo pipefail
work=${1:?usage: broken_android_bp_test.sh WORK_DIR}
project=$(cd "$(dirname "$0")/../.." && pwd)
failures=0

# Breaks a copy of the project's Android.bp by replacing |from| with |to|, and expects Soong to
# reject it with a message matching |message|.
rejects() {  # what from to message
    python3 -c 'import sys; s = open(sys.argv[1]).read(); assert sys.argv[2] in s, sys.argv[2]
open(sys.argv[4], "w").write(s.replace(sys.argv[2], sys.argv[3], 1))' \
        "$project/Android.bp" "$2" "$3" "$work/broken.bp" || exit 1
    local out
    if out=$(bash "$project/tools/soong_check/soong_check.sh" --analyse "$work" "$work/broken.bp" \
        2>&1); then
        echo "FAIL: $1: Soong accepted it"
        failures=$((failures + 1))
    elif ! grep -qE -- "$4" <<<"$out"; then
        echo "FAIL: $1: rejected, but not with /$4/:"
        echo "$out" | head -5
        failures=$((failures + 1))
    else
        echo "ok: $1: $(grep -m1 -E -- "$4" <<<"$out" | sed 's/\x1b\[[0-9;]*m//g')"
    fi
}

bash "$project/tools/soong_check/soong_check.sh" --analyse "$work" "$project/Android.bp" >/dev/null ||
    { echo "FAIL: the project's own Android.bp is rejected"; exit 1; }
rejects "unknown property" '    version_script:' $'    frobnicate: true,\n    version_script:' \
    'unrecognized property "frobnicate"'
rejects "misspelled header library" '"libwpa_client_headers",' '"libwpa_client_header",' \
    'depends on undefined module "libwpa_client_header"'
rejects "missing source" '"src/wrapper/execute.cpp",' '"src/wrapper/exec.cpp",' \
    'source path "[^"]*src/wrapper/exec.cpp" does not exist'
rejects "library with no vendor variant" $'"liblog",\n    ],\n    export' \
    $'"liblog",\n        "libandroid_runtime",\n    ],\n    export' \
    'dependency "libandroid_runtime" of "libtesmirwpacliwrapper" missing variant'
rejects "vendor: true removed" $'    vendor: true,\n' '' \
    'dependency "libwpa_client_headers" of "[^"]+" missing variant'
[ "$failures" -eq 0 ]
