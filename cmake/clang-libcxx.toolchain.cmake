# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Host toolchain: clang with libc++ and lld, as on the device. Used by default (see the top-level
# CMakeLists.txt); stops early when a piece is missing rather than fall back to gcc/libstdc++.

find_program(TESMIR_CLANG NAMES clang-14 clang)
find_program(TESMIR_CLANGXX NAMES clang++-14 clang++)
find_program(TESMIR_LLD NAMES ld.lld-14 ld.lld)
if(NOT TESMIR_CLANG OR NOT TESMIR_CLANGXX OR NOT TESMIR_LLD)
    message(FATAL_ERROR "clang, clang++ and ld.lld are required (Debian: clang lld). "
                        "Run scripts/install-deps.sh.")
endif()
set(CMAKE_C_COMPILER "${TESMIR_CLANG}")
set(CMAKE_CXX_COMPILER "${TESMIR_CLANGXX}")

if(NOT EXISTS "/usr/lib/llvm-14/include/c++/v1/regex" AND NOT EXISTS "/usr/include/c++/v1/regex")
    message(FATAL_ERROR "libc++ headers not found (Debian: libc++-dev libc++abi-dev). "
                        "Run scripts/install-deps.sh.")
endif()

set(CMAKE_CXX_FLAGS_INIT "-stdlib=libc++")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-stdlib=libc++ -fuse-ld=lld")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-stdlib=libc++ -fuse-ld=lld")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-stdlib=libc++ -fuse-ld=lld")
