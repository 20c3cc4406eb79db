#!/usr/bin/env bash
# Checks formatting and clang-tidy on our sources. Needs a configured build (compile database).
#   scripts/lint.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}

mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.cpp' '*.h')
status=0

if ! clang-format --dry-run -Werror "${sources[@]}"; then
    echo "lint: clang-format would change the files above (run clang-format -i)"
    status=1
fi

# Only translation units the build knows; headers are checked through them.
mapfile -t units < <(printf '%s\n' "${sources[@]}" | grep '\.cpp$' |
    while read -r f; do grep -q "\"file\": \"$PWD/$f\"" "$build/compile_commands.json" && echo "$f"; done)
findings=$(printf '%s\n' "${units[@]}" |
    xargs -P "$(nproc)" -n 2 clang-tidy -p "$build" --quiet 2>/dev/null |
    grep -E -A3 '(warning|error):' || true)
if [ -n "$findings" ]; then
    echo "$findings"
    echo "lint: clang-tidy findings above"
    status=1
fi

[ "$status" -eq 0 ] && echo "lint: clean (${#sources[@]} files formatted, ${#units[@]} units tidy)"
exit "$status"
