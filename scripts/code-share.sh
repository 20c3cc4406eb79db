#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Prints how much of the project's code is test code, in non-blank lines. Test code is counted by
# what it does, not where it sits: everything under tests/ (fakes, harnesses, test scripts, the Go
# test of Android.bp with its stand-ins of platform modules), and any file that holds GoogleTest
# tests or a fuzz target.
#   scripts/code-share.sh [--list]          --list also prints each file with its count and kind
#   scripts/code-share.sh --check           fails when test code is more than 35%
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t files < <(git ls-files --cached --others --exclude-standard |
    grep -E '\.(cpp|cc|h|hpp|sh|py|cmake|go|bp)$|CMakeLists\.txt$|^\.ci/run$' | grep -v '/corpus/')

test_lines=0
all_lines=0
for f in "${files[@]}"; do
    [ -f "$f" ] || continue
    n=$(grep -cv '^\s*$' "$f" || true)
    kind=code
    case $f in tests/*) kind=test ;; esac
    if grep -qE 'gtest/gtest\.h|gmock/gmock\.h|LLVMFuzzer''TestOneInput' "$f"; then kind=test; fi
    [ "$kind" = test ] && test_lines=$((test_lines + n))
    all_lines=$((all_lines + n))
    [ "${1:-}" != "--list" ] || printf '%6d  %s  %s\n' "$n" "$kind" "$f"
done
permille=$((test_lines * 1000 / all_lines))
echo "test code: $test_lines of $all_lines non-blank code lines ($((permille / 10)).$((permille % 10))%)"
if [ "${1:-}" = "--check" ] && [ $((test_lines * 100)) -gt $((all_lines * 35)) ]; then
    echo "code-share: more than 35% of the code is test code"
    exit 1
fi
