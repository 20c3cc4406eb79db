#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Installs what is missing, builds every configuration and runs every test suite.
# Ends with one line: "total: N passed, N failed, N skipped"; a build that fails counts as failed.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
passed=0
failed=0
skipped=0

step() { printf '\n==== %s\n' "$*"; }

# Run through sudo: the build trees go back to the user who ran it, whatever happens.
if [ -n "${SUDO_UID:-}" ]; then
    trap 'for d in build*/; do chown -R "$SUDO_UID:${SUDO_GID:-$SUDO_UID}" "$d"; done 2>/dev/null' EXIT
fi

# Configures and builds a tree, then runs ctest in it and adds its counts to the totals.
suite() {  # name build-dir "ctest options" [cmake options...]
    local name=$1 dir=$2 ctest_options=$3
    shift 3
    step "$name"
    if ! cmake -S . -B "$dir" -G Ninja "$@" >/dev/null || ! cmake --build "$dir" -j "$jobs"; then
        echo "$name: the build failed"
        failed=$((failed + 1))
        return
    fi
    local log="$dir/ctest-$name.log"
    # shellcheck disable=SC2086 # the options are words
    ctest --test-dir "$dir" -j "$jobs" --output-on-failure $ctest_options 2>&1 | tee "$log" || true
    local summary total nfail nskip
    summary=$(grep -E '[0-9]+ tests? failed out of [0-9]+' "$log" | tail -1 || true)
    if [ -z "$summary" ]; then
        echo "$name: ctest ran nothing"
        failed=$((failed + 1))
        return
    fi
    nfail=$(sed -E 's/.* ([0-9]+) tests? failed out of ([0-9]+).*/\1/' <<<"$summary")
    total=$(sed -E 's/.* ([0-9]+) tests? failed out of ([0-9]+).*/\2/' <<<"$summary")
    nskip=$(grep -c -E '^\s*[0-9]+ - .*\(Skipped\)' "$log" || true)
    passed=$((passed + total - nfail - nskip))
    failed=$((failed + nfail))
    skipped=$((skipped + nskip))
}

# A check that is one command: counts as one test.
run_check() {  # name command...
    local name=$1
    shift
    step "$name"
    if "$@"; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
}

step "dependencies"
if [ "$(id -u)" -eq 0 ]; then
    echo "As root, this run changes the machine where something is missing: it installs Debian"
    echo "packages (scripts/install-deps.sh), adds dpkg's arm64 architecture for the cross build,"
    echo "and adds a deb-src entry for the sources of Google Benchmark and wpa_supplicant"
    echo "(scripts/deb-source.sh)."
    echo "Each change is announced before it is made."
    scripts/install-deps.sh --arm64
else
    echo "not root: assuming the packages of scripts/install-deps.sh are installed"
fi

# The radio lab's kernel, built once before the suites that boot it (minutes on a fresh tree).
if lab_why=$(scripts/radio-lab.sh check 2>&1); then
    lab_why=""
    run_check "radio lab: User-Mode Linux kernel with mac80211_hwsim (build-uml/)" \
        scripts/radio-lab.sh kernel
else
    echo "radio tests will be skipped: $lab_why"
fi
suite "host (clang, libc++, trapping checks)" build "" -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON

# The README's main job as a newcomer runs it, on the host tree above and the lab's kernel.
if [ -z "$lab_why" ]; then
    run_check "the main job: scripts/demo.sh" scripts/demo.sh
else
    step "the main job: scripts/demo.sh"
    echo "skipped: $lab_why"
    skipped=$((skipped + 1))
fi
suite "host, checks in Android 14's order (UBSan minimal runtime)" build-minrt "-L unit" \
    -DTESMIR_UBSAN_MINIMAL_RUNTIME=ON -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=OFF
suite "arm64 under qemu-aarch64" build-arm64 "" \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/aarch64-linux-gnu.toolchain.cmake" \
    -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON

arm64_library() {
    local lib=build-arm64/libtesmirwpacliwrapper.so
    local kind
    kind=$(file "$lib")
    echo "$kind"
    grep -q 'ELF 64-bit LSB shared object, ARM aarch64' <<<"$kind" || return 1
    llvm-strip-14 -o build-arm64/libtesmirwpacliwrapper.stripped.so "$lib"
    echo "stripped size: $(stat -c %s build-arm64/libtesmirwpacliwrapper.stripped.so) bytes"
    # libc++ must stay a shared dependency, not linked in.
    readelf -d "$lib" | grep -q 'NEEDED.*libc++.so.1'
}
run_check "arm64 library" arm64_library

suite "AddressSanitizer and UndefinedBehaviorSanitizer" build-asan "" -DTESMIR_ASAN=ON \
    -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON

suite "fuzzing: libFuzzer with ASan and the library's checks, 30 s a target" build-fuzz "" \
    -DTESMIR_FUZZ=ON -DTESMIR_FUZZ_SECONDS=30

bpfmt_clean() {
    local diff
    diff=$(bpfmt -d Android.bp) && [ -z "$diff" ] && echo "Android.bp: bpfmt clean" || {
        echo "$diff"
        return 1
    }
}
run_check bpfmt bpfmt_clean
# Soong's own test harness over Android.bp, from Debian's Soong sources (GOPATH mode).
soong_test() {
    (cd tests/soong && GO111MODULE=off GOPATH=/usr/share/gocode GOCACHE="$OLDPWD/build-soong/gocache" \
        go test -count=1 -v .)
}
run_check "Soong's analysis of Android.bp, broken copies, and the device link with CFI" soong_test
# The benchmarks' wired lab; one left by a crashed earlier run would hold a namespace.
scripts/supplicant-lab.sh sweep 2>/dev/null || true
run_check "benchmarks, short" scripts/bench.sh --short
run_check lint scripts/lint.sh build build-bench
run_check "test code is at most 35% of the code" scripts/code-share.sh --check

echo
echo "total: $passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]
