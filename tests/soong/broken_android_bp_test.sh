#!/usr/bin/env bash
# The Soong check must be able to fail: broken copies of Android.bp, each rejected by Soong with
# its own message.
#   broken_android_bp_test.sh WORK_DIR
set -uo pipefail
work=${1:?usage: broken_android_bp_test.sh WORK_DIR}
project=$(cd "$(dirname "$0")/../.." && pwd)
check=$project/tools/soong_check/soong_check.sh
copy=$work/broken.bp
failures=0

# Writes the project's Android.bp to $copy with the first |from| replaced by |to|.
edit() {  # from to
    python3 -c 'import sys; s = open(sys.argv[1]).read(); assert sys.argv[2] in s, sys.argv[2]
open(sys.argv[4], "w").write(s.replace(sys.argv[2], sys.argv[3], 1))' \
        "$project/Android.bp" "$1" "$2" "$copy"
}

expect_rejected() {  # what message-regex
    local out
    if out=$(bash "$check" --analyse "$work" "$copy" 2>&1); then
        echo "FAIL: $1: Soong accepted it"
        failures=$((failures + 1))
    elif ! grep -qE -- "$2" <<<"$out"; then
        echo "FAIL: $1: rejected, but not with /$2/:"
        echo "$out" | head -5
        failures=$((failures + 1))
    else
        echo "ok: $1: $(grep -m1 -E -- "$2" <<<"$out" | sed 's/\x1b\[[0-9;]*m//g')"
    fi
}

cp "$project/Android.bp" "$copy"
bash "$check" --analyse "$work" "$copy" >/dev/null 2>&1 || {
    echo "FAIL: the project's own Android.bp is rejected"
    exit 1
}

edit '    version_script:' '    frobnicate: true,
    version_script:'
expect_rejected "unknown property" 'unrecognized property "frobnicate"'

edit '"libwpa_client_headers",' '"libwpa_client_header",'
expect_rejected "misspelled header library" 'depends on undefined module "libwpa_client_header"'

edit '"src/wrapper/execute.cpp",' '"src/wrapper/exec.cpp",'
expect_rejected "missing source" 'source path "[^"]*src/wrapper/exec.cpp" does not exist'

edit '        "liblog",
    ],
    export_include_dirs' '        "liblog",
        "libandroid_runtime",
    ],
    export_include_dirs'
expect_rejected "library with no vendor variant" 'dependency "libandroid_runtime" of "libtesmirwpacliwrapper" missing variant'

edit '    vendor: true,
' ''
expect_rejected "vendor: true removed" 'dependency "libwpa_client_headers" of "[^"]+" missing variant'

[ "$failures" -eq 0 ]
