#!/usr/bin/env bash
# Analyses the project's Android.bp with Soong itself (Debian's golang-android-soong-dev: Soong's
# Go sources, Android 11 era), as a device tree would, and reproduces the device link of the
# shared library on the host.
#
#   soong_check.sh WORK_DIR [ANDROID_BP]        full check of ANDROID_BP (default: the project's)
#   soong_check.sh --analyse WORK_DIR [BP]      Soong's analysis only; its messages on failure
#
# The project is laid out as vendor/tesmir/wpacliwrapper in a throw-away source tree under
# WORK_DIR, beside stand-ins for the platform modules it reaches (stubs.bp), for an arm64 device
# with a 32-bit arm secondary architecture (soong.variables). soong_build is built once into
# WORK_DIR. Needs golang-go, golang-android-soong-dev, golang-github-google-blueprint-dev and
# golang-github-golang-protobuf-1-3-dev.
set -euo pipefail

analyse_only=0
if [ "${1:-}" = "--analyse" ]; then
    analyse_only=1
    shift
fi
work=$(realpath -m "${1:?usage: soong_check.sh [--analyse] WORK_DIR [ANDROID_BP]}")
here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../.." && pwd)
bp=$(realpath "${2:-$project/Android.bp}")
modules=(libtesmirwpacliwrapper_core libtesmirwpacliwrapper libtesmirwpacliwrapper_unit_test
    wpacli-host)

die() {
    echo "soong-check: $*" >&2
    exit 1
}

# soong_build with the cc, etc, genrule, phony and sh module types registered.
soong_build=$work/soong_build
soong_src=/usr/share/gocode/src/android/soong/cmd/soong_build
if [ ! -x "$soong_build" ] || [ "$here/modules.go" -nt "$soong_build" ]; then
    [ -d "$soong_src" ] || die "no Soong sources in $soong_src (Debian: golang-android-soong-dev)"
    gopath=$work/gopath
    rm -rf "$gopath"
    mkdir -p "$gopath/src/tesmir/soong_build"
    cp "$soong_src"/*.go "$gopath/src/tesmir/soong_build/"
    rm -f "$gopath"/src/tesmir/soong_build/*_test.go
    cp "$here/modules.go" "$gopath/src/tesmir/soong_build/"
    (cd "$gopath/src/tesmir/soong_build" &&
        GO111MODULE=off GOPATH="$gopath:/usr/share/gocode" GOCACHE="$work/gocache" \
            go build -o "$soong_build" .)
fi

# A fresh source tree each time, so that nothing of an earlier Android.bp is left in it.
tree=$work/tree
rm -rf "$tree"
mkdir -p "$tree/out/soong/bin" "$tree/out/.module_paths" "$tree/build/soong/cc/config" \
    "$tree/platform/liblog/include" "$tree/platform/wpa_client_include/libwpa_client" \
    "$tree/vendor/tesmir/wpacliwrapper"
: >"$tree/Android.bp"
# Soong's CFI support reads it; the platform ships it in build/soong.
: >"$tree/build/soong/cc/config/cfi_exports.map"
cp "$here/stubs.bp" "$tree/platform/Android.bp"
for entry in "$project"/*; do
    [ "$(basename "$entry")" = Android.bp ] || ln -s "$entry" "$tree/vendor/tesmir/wpacliwrapper/"
done
cp "$bp" "$tree/vendor/tesmir/wpacliwrapper/Android.bp"
cp "$here/soong.variables" "$tree/out/soong/soong.variables"
printf '%s\n' Android.bp platform/Android.bp vendor/tesmir/wpacliwrapper/Android.bp \
    >"$tree/out/.module_paths/Android.bp.list"
# soong_build finds itself through argv[0], which must lie under its output directory.
cp "$soong_build" "$tree/out/soong/bin/soong_build"

ninja=$tree/out/soong/build.ninja
(cd "$tree" && out/soong/bin/soong_build -b out/soong -n out -d out/soong/build.ninja.d \
    -l out/.module_paths/Android.bp.list -o out/soong/build.ninja Android.bp) ||
    die "Soong rejected $bp"
[ -s "$ninja" ] || die "Soong wrote no build.ninja"
[ "$analyse_only" -eq 1 ] && exit 0

# Every module of ours has a vendor variant, and only 64-bit ones: the target is arm64, and the
# fixed log formats that print size_t with %lu do not compile where size_t is 32 bits.
for module in "${modules[@]}"; do
    variants=$(grep -A1 -E "^# Module: +$module\$" "$ninja" | sed -n 's/^# Variant: *//p' | sort -u)
    grep -q '^android_vendor\.' <<<"$variants" || die "$module has no vendor variant"
    if grep -v '_arm64_' <<<"$variants" | grep -q .; then
        die "$module has variants other than arm64: $(grep -v '_arm64_' <<<"$variants" | tr '\n' ' ')"
    fi
    echo "soong-check: $module: $(tr '\n' ' ' <<<"$variants")"
done

# The device link of the shared library, reproduced on the host: our sources compiled with the
# RTTI setting Soong gives them, linked with the version script and Soong's
# --no-undefined-version, so that every exported name must exist.
core_flags=$(sed -n -E 's/^m\.libtesmirwpacliwrapper_core_android_vendor[^ ]*_arm64_[^ ]*_static\.cppflags = //p' \
    "$ninja" | head -1)
rtti=$(grep -o -E -- '-f(no-)?rtti' <<<"$core_flags" | tail -1) || die "no RTTI flag in: $core_flags"
grep -q -- '--no-undefined-version' "$ninja" || die "Soong's device link flags lack --no-undefined-version"
objects=$work/link
rm -rf "$objects"
mkdir -p "$objects"
cxx=(clang++-14 -std=c++17 -stdlib=libc++ -fno-exceptions "$rtti" -O2 -fPIC -fvisibility=hidden
    -fvisibility-inlines-hidden -Wall -Wextra -Werror -I"$project/include" -I"$project/src"
    -I/usr/include/android)
pids=()
for source in "$project"/src/*/*.cpp; do
    "${cxx[@]}" -c "$source" -o "$objects/$(basename "$source" .cpp).o" &
    pids+=($!)
done
for pid in "${pids[@]}"; do
    wait "$pid" || die "the library's sources do not compile with $rtti"
done
clang++-14 -stdlib=libc++ -fuse-ld=lld -shared -o "$objects/libtesmirwpacliwrapper.so" \
    "$objects"/*.o -Wl,--version-script="$project/src/libtesmirwpacliwrapper.map" \
    -Wl,--no-undefined-version -Wl,--allow-shlib-undefined ||
    die "the device link fails with Soong's $rtti and --no-undefined-version"
echo "soong-check: Android.bp analysed by Soong; the library links with $rtti and --no-undefined-version"
