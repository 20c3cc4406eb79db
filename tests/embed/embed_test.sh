#!/usr/bin/env bash
# Builds and runs a small host project that takes the library with add_subdirectory, and one that
# finds it installed with find_package. A GCC host must be refused with the reason.
#   embed_test.sh WORK_DIR
set -euo pipefail
work=$1
here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../.." && pwd)
rm -rf "$work"
clang=(-G Ninja -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14
    -DCMAKE_CXX_FLAGS=-stdlib=libc++ -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld
    -DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld)

cmake -S "$here" -B "$work/subdirectory" "${clang[@]}" -DTESMIR_SOURCE="$project" >/dev/null
cmake --build "$work/subdirectory" >/dev/null
[ ! -d "$work/subdirectory/tesmir/tests" ] || { echo "the library's tests built in a host"; exit 1; }
"$work/subdirectory/host" && echo "host built with add_subdirectory: ran"

cmake -S "$project" -B "$work/library" -G Ninja -DCMAKE_INSTALL_PREFIX="$work/prefix" \
    -DTESMIR_BUILD_TESTS=OFF -DTESMIR_BUILD_TOOLS=OFF >/dev/null
cmake --build "$work/library" >/dev/null
cmake --install "$work/library" >/dev/null
cmake -S "$here" -B "$work/installed" "${clang[@]}" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/installed" >/dev/null
"$work/installed/host" && echo "host built with find_package: ran"

if cmake -S "$here" -B "$work/gcc" -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ \
    -DTESMIR_SOURCE="$project" >"$work/gcc.log" 2>&1; then
    echo "a GCC host was not refused"
    exit 1
fi
grep -A3 'must be built by clang with libc++' "$work/gcc.log"
