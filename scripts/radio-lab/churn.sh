#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Inside the radio lab's crowd (radio-lab.sh run -a crowd): makes the station's BSS table change
# under a host, as a device's does at the edge of range and beside a framework that scans.
#   churn.sh edge SECONDS        wlan3's eight networks leave and come back every 2.4 s: switched
#                                off, dropped by a second client's BSS_FLUSH 1 once older than
#                                1 s, then found again by its scans, under new, higher ids
#   churn.sh flush-all SECONDS   the extreme: a second client's BSS_FLUSH 0 and a scan every 0.3 s
# Runs for SECONDS, then stops by itself.
set -u
lab=${TESMIR_LAB_DIR:?run inside the radio lab}
mode=${1:?usage: churn.sh edge|flush-all SECONDS}
seconds=${2:?usage: churn.sh edge|flush-all SECONDS}
station() { wpa_cli -p "$lab/ctrl" -i wlan0 "$@" >/dev/null 2>&1; }
radio() { hostapd_cli -p "$lab/hostapd" -i wlan3 "$1" >/dev/null 2>&1; }

end=$((SECONDS + seconds))
case $mode in
edge)
    while [ "$SECONDS" -lt "$end" ]; do
        radio disable
        sleep 0.6
        station scan freq=2412,2437,2462 only_new=1
        sleep 0.6
        station bss_flush 1
        radio enable
        sleep 0.6
        station scan freq=2412,2437,2462 only_new=1
        sleep 0.6
    done
    ;;
flush-all)
    while [ "$SECONDS" -lt "$end" ]; do
        station bss_flush 0
        station scan freq=2412,2437,2462 only_new=1
        sleep 0.3
    done
    ;;
*) echo "churn: unknown mode $mode" >&2 && exit 64 ;;
esac
radio enable
