# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
# shellcheck shell=bash
#
# What the tools suites share: a verdict for each check, counted in $failures.
failures=0

judge() {  # description what-was-seen command...: passes when the command succeeds
    local what=$1 seen=$2
    shift 2
    if "$@"; then
        echo "ok: $what"
    else
        echo "FAIL: $what: $seen"
        failures=$((failures + 1))
    fi
}

expect() {  # description expected-exit expected-stdout-regex command...
    local what=$1 code=$2 pattern=$3 out rc matched=no
    shift 3
    out=$("$@" 2>/dev/null)
    rc=$?
    grep -qE -- "$pattern" <<<"$out" && matched=yes
    judge "$what" "exit $rc (want $code), output: $out" test "$rc" -eq "$code" -a "$matched" = yes
}

# description expected-exit-regex last-stderr-line-regex command...: a recipe's outcome
outcome() {
    local what=$1 code=$2 pattern=$3 said last rc
    shift 3
    said=$("$@" 2>&1 >/dev/null)
    rc=$?
    last=$(tail -n 1 <<<"$said")
    judge "$what" "exit $rc (want $code), last line: $last" \
        test -n "$(grep -xE -- "$code" <<<"$rc")" -a -n "$(grep -E -- "$pattern" <<<"$last")"
}
