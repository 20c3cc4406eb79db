#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Builds wpa_supplicant as devices build it, from Debian's own source of the installed package:
# Debian's configuration with ANDROID defined, which switches on upstream's Android code (the
# CTRL-EVENT-STATE-CHANGE event, the events STATUS sends every monitor). What a device takes
# from its platform comes from android-platform/: no reserved sockets, no vendor driver library.
# Built once and kept as BUILD_DIR/wpa_supplicant-android-<key>, the key covering the source's
# version, the configuration and the stand-ins. Prints the binary's path.
#   supplicant.sh BUILD_DIR
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
out=${1:?usage: supplicant.sh BUILD_DIR}
mkdir -p "$out"
out=$(cd "$out" && pwd)
exec 9>"$out/.supplicant.lock"
flock 9

version=$(dpkg-query -W -f='${Version}' wpasupplicant)
key=$( (echo "$version"; cat "$0" "$here"/android-platform/*.c "$here"/android-platform/*/*.h) |
    sha256sum | cut -c1-12)
binary=$out/wpa_supplicant-android-$key
if [ -x "$binary" ]; then
    echo "$binary"
    exit 0
fi

echo "radio-lab: building wpa_supplicant $version with ANDROID defined (a minute, once)" >&2
work=$out/wpa-src
rm -rf "$work"
mkdir -p "$work"
"$here/../deb-source.sh" wpa "$work/wpa" "$version" >&2
cp -r "$here/android-platform" "$work/wpa/wpa_supplicant/android-platform"
cd "$work/wpa/wpa_supplicant"
# A device has neither D-Bus nor a smartcard reader nor a terminal; WEXT is gone from its kernels.
grep -v -E '^CONFIG_(CTRL_IFACE_DBUS|PCSC|SMARTCARD|READLINE|DRIVER_WEXT)' \
    ../debian/config/wpasupplicant/linux >.config
cat >>.config <<'EOF'
CFLAGS += -DANDROID -DANDROID_LIB_STUB -Iandroid-platform
EXTRALIBS += android-platform/driver_stubs.o
# Their Android paths need the platform's user table and keystore: built as on a desktop.
%/src/utils/os_unix.o: CFLAGS += -UANDROID
%/src/crypto/tls_openssl.o: CFLAGS += -UANDROID
EOF
# shellcheck disable=SC2046 # the flags are words
cc -O2 -c $(pkg-config --cflags libnl-3.0) -o android-platform/driver_stubs.o \
    android-platform/driver_stubs.c
make -j "$(nproc)" wpa_supplicant >"$out/supplicant-build.log" 2>&1 || {
    tail -30 "$out/supplicant-build.log" >&2
    exit 1
}
rm -f "$out"/wpa_supplicant-android-????????????
cp wpa_supplicant "$binary"
cd "$out"
rm -rf "$work"
echo "$binary"
