# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Cross build for 64-bit Arm: clang --target, lld, and Debian's arm64 libc++ unpacked into the build
# tree (scripts/arm64-sysroot.sh; it cannot be installed beside the host's). glibc, libgcc,
# libwpa_client and liblog come from Debian multiarch (scripts/install-deps.sh --arm64).
# Tests run under qemu-aarch64.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(TESMIR_TRIPLE aarch64-linux-gnu)

find_program(TESMIR_CLANG NAMES clang-14 clang)
find_program(TESMIR_CLANGXX NAMES clang++-14 clang++)
find_program(TESMIR_LLD NAMES ld.lld-14 ld.lld)
find_program(TESMIR_QEMU qemu-aarch64)
if(NOT TESMIR_CLANG OR NOT TESMIR_CLANGXX OR NOT TESMIR_LLD OR NOT TESMIR_QEMU)
    message(FATAL_ERROR "clang, lld and qemu-aarch64 are required (Debian: clang lld qemu-user). "
                        "Run scripts/install-deps.sh --arm64.")
endif()
if(NOT EXISTS "/usr/lib/${TESMIR_TRIPLE}/crt1.o")
    message(FATAL_ERROR "arm64 glibc not found (Debian: libc6-dev:arm64 libgcc-12-dev:arm64). "
                        "Run scripts/install-deps.sh --arm64.")
endif()

set(CMAKE_C_COMPILER "${TESMIR_CLANG}")
set(CMAKE_CXX_COMPILER "${TESMIR_CLANGXX}")
set(CMAKE_C_COMPILER_TARGET ${TESMIR_TRIPLE})
set(CMAKE_CXX_COMPILER_TARGET ${TESMIR_TRIPLE})
set(CMAKE_LIBRARY_ARCHITECTURE ${TESMIR_TRIPLE})

# Fixed once by the top-level configure and handed to CMake's compiler checks.
if(NOT TESMIR_ARM64_LIBCXX)
    set(TESMIR_ARM64_LIBCXX "${CMAKE_BINARY_DIR}/arm64-libcxx" CACHE PATH "arm64 libc++ root")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TESMIR_ARM64_LIBCXX)
if(NOT EXISTS "${TESMIR_ARM64_LIBCXX}/.complete")
    execute_process(
        COMMAND bash "${CMAKE_CURRENT_LIST_DIR}/../scripts/arm64-sysroot.sh" "${TESMIR_ARM64_LIBCXX}"
        RESULT_VARIABLE _rc)
    if(NOT _rc EQUAL 0)
        message(FATAL_ERROR "could not unpack arm64 libc++ into ${TESMIR_ARM64_LIBCXX}")
    endif()
endif()

set(_libcxx_headers "${TESMIR_ARM64_LIBCXX}/usr/lib/llvm-14/include/c++/v1")
set(_libcxx_libs "${TESMIR_ARM64_LIBCXX}/usr/lib/${TESMIR_TRIPLE}")
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${_libcxx_headers}")
set(_link "-fuse-ld=lld -stdlib=libc++ -L${_libcxx_libs} -Wl,-rpath,${_libcxx_libs}")
# The header flags above reach the link lines too, where they mean nothing.
string(APPEND _link " -Wno-unused-command-line-argument")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_link}")

set(CMAKE_CROSSCOMPILING_EMULATOR "${TESMIR_QEMU}")
