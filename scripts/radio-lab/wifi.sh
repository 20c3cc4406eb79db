#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Inside the radio lab: turns the station's Wi-Fi on or off as a device's framework does, by
# starting or ending wpa_supplicant on wlan0. "on" returns once the control socket is there.
#   wifi.sh on|off
set -u
lab=${TESMIR_LAB_DIR:?run inside the radio lab}
die() {
    echo "wifi: $*" >&2
    exit 1
}
# shellcheck source=scripts/lab-lib.sh
. "$(dirname "$0")/../lab-lib.sh"

case ${1:-} in
on)
    [ -f "$lab/wpa_supplicant.conf" ] ||
        printf '%s\n' "ctrl_interface=$lab/ctrl" ap_scan=1 p2p_disabled=1 >"$lab/wpa_supplicant.conf"
    "${TESMIR_SUPPLICANT_BINARY:?}" -B -D nl80211 -i wlan0 -c "$lab/wpa_supplicant.conf" \
        -P "$lab/wpa_supplicant.pid" -f "$lab/wpa_supplicant.log" || die "wpa_supplicant did not start"
    wait_for_socket "$lab/ctrl/wlan0"
    ;;
off) stop_pidfile "$lab/wpa_supplicant.pid" ;;
*) die "usage: wifi.sh on|off" ;;
esac
