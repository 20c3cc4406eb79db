#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Checks formatting and clang-tidy on our sources. Each translation unit is checked with the first
# of the given build trees whose compile database has it.
#   scripts/lint.sh [BUILD_DIR...]    (default: build)
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- build

mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.cpp' '*.h')
status=0

if ! clang-format --dry-run -Werror "${sources[@]}"; then
    echo "lint: clang-format would change the files above (run clang-format -i)"
    status=1
fi

unformatted=$(gofmt -l tests/soong)
if [ -n "$unformatted" ]; then
    echo "$unformatted"
    echo "lint: gofmt would change the files above (run gofmt -w)"
    status=1
fi

# "unit build-dir" pairs; headers are checked through the units that include them.
pairs=()
for f in "${sources[@]}"; do
    [[ "$f" == *.cpp ]] || continue
    for dir in "$@"; do
        if [ -f "$dir/compile_commands.json" ] &&
            grep -q "\"file\": \"$PWD/$f\"" "$dir/compile_commands.json"; then
            pairs+=("$f" "$dir")
            break
        fi
    done
done
findings=$(printf '%s\n' "${pairs[@]}" |
    xargs -P "$(nproc)" -n 2 sh -c 'clang-tidy -p "$1" --quiet "$0" 2>/dev/null' |
    grep -E -A3 '(warning|error):' || true)
if [ -n "$findings" ]; then
    echo "$findings"
    echo "lint: clang-tidy findings above"
    status=1
fi

[ "$status" -eq 0 ] && echo "lint: clean (${#sources[@]} files formatted, $((${#pairs[@]} / 2)) units tidy)"
exit "$status"
