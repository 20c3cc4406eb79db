#!/usr/bin/env bash
# Installs what is missing, builds every configuration and runs every test suite.
# Ends with one line: "total: N passed, N failed, N skipped".
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
passed=0
failed=0
skipped=0

step() { printf '\n==== %s\n' "$*"; }

configure_and_build() {  # build-dir [cmake options...]
    local dir=$1
    shift
    cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
    cmake --build "$dir" -j "$jobs"
}

# Runs ctest in a build tree and adds its counts to the totals.
run_suite() {  # name build-dir [ctest options...]
    local name=$1 dir=$2
    shift 2
    step "$name"
    local log="$dir/ctest-$name.log"
    ctest --test-dir "$dir" -j "$jobs" --output-on-failure "$@" 2>&1 | tee "$log" || true
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
    scripts/install-deps.sh --arm64
else
    echo "not root: assuming the packages of scripts/install-deps.sh are installed"
fi

step "host build (clang, libc++, trapping checks)"
configure_and_build build -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON -DTESMIR_CFI=OFF
# Labs left by a crashed earlier run would hold namespaces and supplicants.
scripts/supplicant-lab.sh sweep 2>/dev/null || true
if ! why=$(scripts/supplicant-lab.sh check 2>&1); then
    echo "real-supplicant tests will be skipped: $why"
fi
run_suite host build

step "cross-DSO CFI build"
configure_and_build build-cfi -DTESMIR_CFI=ON -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=OFF
run_suite cfi build-cfi -L cfi

step "arm64 build (clang --target, Debian's arm64 libc++) and the suite under qemu-aarch64"
configure_and_build build-arm64 -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/aarch64-linux-gnu.toolchain.cmake" \
    -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON
run_suite arm64 build-arm64

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

bpfmt_clean() {
    local diff
    diff=$(bpfmt -d Android.bp) && [ -z "$diff" ] && echo "Android.bp: bpfmt clean" || {
        echo "$diff"
        return 1
    }
}
run_check bpfmt bpfmt_clean
run_check "Soong analysis of Android.bp, and the device link" tools/soong_check/soong_check.sh build-soong
run_check "Soong rejects broken copies of Android.bp" tests/soong/broken_android_bp_test.sh build-soong

step "AddressSanitizer and UndefinedBehaviorSanitizer build"
configure_and_build build-asan -DTESMIR_ASAN=ON -DTESMIR_BUILD_TESTS=ON -DTESMIR_BUILD_TOOLS=ON
run_suite asan build-asan

step "fuzzing: a short run of each target"
configure_and_build build-fuzz -DTESMIR_FUZZ=ON -DTESMIR_FUZZ_SECONDS=15 -DTESMIR_BUILD_TESTS=ON \
    -DTESMIR_BUILD_TOOLS=OFF
run_suite fuzz build-fuzz -L fuzz

run_check "benchmarks, short" scripts/bench.sh --short

run_check lint scripts/lint.sh build build-bench build-fuzz

echo
echo "total: $passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]
