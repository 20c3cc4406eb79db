#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Builds and runs a small host project that takes the library and the recipes with
# add_subdirectory, and one that finds version 1.0 installed with find_package; runs the installed tool from a moved prefix. A
# newer major version, a GCC configure and a host compiled against libstdc++ are refused.
#   embed_test.sh WORK_DIR
set -euo pipefail
work=$1
here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../.." && pwd)
rm -rf "$work"
clang=(-G Ninja -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14
    -DCMAKE_CXX_FLAGS=-stdlib=libc++ -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld
    -DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld)
refused() {  # what log expected-message
    grep -m1 -- "$3" "$2" >/dev/null || { echo "$1: not refused with \"$3\""; cat "$2"; exit 1; }
    echo "$1: refused: $(grep -m1 -o -- "$3.*" "$2" | cut -c1-110)"
}

cmake -S "$here" -B "$work/subdirectory" "${clang[@]}" -DTESMIR_SOURCE="$project" >/dev/null
cmake --build "$work/subdirectory" >/dev/null
[ ! -d "$work/subdirectory/tesmir/tests" ] || { echo "the library's tests built in a host"; exit 1; }
"$work/subdirectory/host" && echo "host built with add_subdirectory: ran"

cmake -S "$project" -B "$work/library" -G Ninja -DCMAKE_INSTALL_PREFIX="$work/prefix" \
    -DTESMIR_BUILD_TESTS=OFF -DTESMIR_BUILD_TOOLS=ON >/dev/null
cmake --build "$work/library" >/dev/null
cmake --install "$work/library" >/dev/null
cmake -S "$here" -B "$work/installed" "${clang[@]}" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/installed" >/dev/null
"$work/installed/host" && echo "host built with find_package(tesmirwpacliwrapper 1.0): ran"
mv "$work/prefix" "$work/moved"
"$work/moved/bin/tesmir-wpacli" --help | grep -q '^usage: tesmir-wpacli' &&
    echo "installed tool: --help runs from a moved prefix"

cmake -S "$here" -B "$work/v2" "${clang[@]}" -DCMAKE_PREFIX_PATH="$work/moved" -DTESMIR_VERSION=2.0 \
    >"$work/v2.log" 2>&1 && { echo "find_package(tesmirwpacliwrapper 2.0) succeeded"; exit 1; }
refused "find_package 2.0" "$work/v2.log" 'tesmirwpacliwrapperConfig.cmake, version: 1.1.0'
cmake -S "$here" -B "$work/gcc" -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ \
    -DTESMIR_SOURCE="$project" >"$work/gcc.log" 2>&1 && { echo "a GCC configure was not refused"; exit 1; }
refused "GCC configure" "$work/gcc.log" 'must be built by clang with libc++'
g++ -fsyntax-only -I"$work/moved/include" -I"$work/moved/include/tesmirrecipes" "$here/host.cpp" >"$work/gxx.log" 2>&1 &&
    { echo "a g++ host compiled against the installed headers"; exit 1; }
refused "g++ host" "$work/gxx.log" 'compile this host with clang and libc++'
