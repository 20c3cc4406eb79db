#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Inside the radio lab: a root of a device's shape at ROOT, and the station's supplicant moved
# into it as init starts a device's: user and group wifi (1010) with NET_ADMIN and NET_RAW, its
# sockets in /data/vendor/wifi/wpa/sockets (wifi:wifi 0770, as init makes it). This machine's
# /usr and /etc are bound in, with /etc/passwd and /etc/group also naming the user system (1000)
# and the group wifi (1010), which bionic knows built in and AOSP's libwpa_client looks up by
# name; /vendor/bin and /vendor/lib64 take what is copied there; /tmp is root's alone, as no
# vendor domain may write it. Run a host in it as a vendor service runs:
#   chroot --userspec=1000:1010 --groups=1010 ROOT COMMAND       (user system, group wifi)
# The supplicant's pid file is ROOT/data/vendor/wifi/wpa/wpa_supplicant.pid.
#   vendor-root.sh ROOT
set -u
: "${TESMIR_LAB_DIR:?run inside the radio lab}"
new=${1:?usage: vendor-root.sh ROOT}
wpa=/data/vendor/wifi/wpa
die() {
    echo "vendor-root: $*" >&2
    exit 1
}
# shellcheck source=scripts/lab-lib.sh
. "$(dirname "$0")/../lab-lib.sh"

mkdir -p "$new"/{usr,etc,proc,sys,dev,tmp,vendor/bin/hw,vendor/lib64,$wpa/sockets}
for dir in usr etc proc sys dev; do
    mount --bind "/$dir" "$new/$dir" || die "cannot bind /$dir"
done
mkdir -p "$new/.ids"
{ grep -v -E '^system:' /etc/passwd; echo 'system:x:1000:1000::/:/usr/sbin/nologin'; } >"$new/.ids/passwd"
{ grep -v -E '^(system|wifi):' /etc/group; printf '%s\n' 'system:x:1000:' 'wifi:x:1010:'; } \
    >"$new/.ids/group"
for ids in passwd group; do
    mount --bind "$new/.ids/$ids" "$new/etc/$ids" || die "cannot bind /etc/$ids"
done
for link in bin lib lib64 sbin; do
    [ -L "/$link" ] && ln -s "$(readlink "/$link")" "$new/$link"
done
chmod 0755 "$new/tmp"
chown 1010:1010 "$new$wpa" "$new$wpa/sockets"
chmod 0770 "$new$wpa" "$new$wpa/sockets"

"$(dirname "$0")/wifi.sh" off
cp "${TESMIR_SUPPLICANT_BINARY:?}" "$new/vendor/bin/hw/wpa_supplicant"
printf '%s\n' "ctrl_interface=$wpa/sockets" ap_scan=1 p2p_disabled=1 >"$new$wpa/wpa_supplicant.conf"
chroot "$new" setpriv --reuid=1010 --regid=1010 --clear-groups --inh-caps=+net_admin,+net_raw \
    --ambient-caps=+net_admin,+net_raw /vendor/bin/hw/wpa_supplicant -B -D nl80211 -i wlan0 \
    -c "$wpa/wpa_supplicant.conf" -P "$wpa/wpa_supplicant.pid" -f "$wpa/wpa_supplicant.log" ||
    die "the supplicant did not start"
wait_for_socket "$new$wpa/sockets/wlan0"
