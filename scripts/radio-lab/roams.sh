#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Inside the radio lab's roaming layout: roams with tesmir-recipes RUNS times for each case and
# prints how each was told, a line a case and answer: "case<TAB>via=...<TAB>runs". Run by
# scripts/outcome-survey.sh.
#   roams.sh RECIPES RUNS
set -uo pipefail
recipes=$1
runs=$2
socket=${TESMIR_LAB_SOCKET:?run inside the radio lab}
certs=${TESMIR_LAB_CERTS:?}
tool() { "$recipes" "$socket" "$@" 2>/dev/null; }
# The BSSID a tool's line starts with, and the answer it ends with.
joined() { sed -n 's/^bssid=\([^ ]*\) .*/\1/p'; }
via() { sed -n 's/.* \(via=[a-z-]*\)$/\1/p'; }
count() { sort | uniq -c | sed -E 's/^ *([0-9]+) (.*)$/\2\t\1/'; }
# How a roam was told: its via=, or "failed" when the tool printed no line.
told() {
    local line
    line=$(tool roam "$@" | via)
    echo "${line:-failed}"
}

# Joins |ssid| and roams between its two BSSes RUNS times: case ssid first second roam-args...
# A connect that failed counts once, as what it said last.
alternate() {
    local name=$1 ssid=$2 a=$3 b=$4 here
    shift 4
    here=$("$recipes" "$socket" connect "$ssid" psk tesmir-passphrase "2412 2437 2462" "$@" \
        2>"$TESMIR_LAB_DIR/roams.err" | joined)
    if [ -z "$here" ]; then
        printf '%s\tconnect %s\t1\n' "$name" "$(tail -n 1 "$TESMIR_LAB_DIR/roams.err")"
        tool forget >/dev/null
        return
    fi
    for _ in $(seq "$runs"); do
        [ "$here" = "$a" ] && here=$b || here=$a
        printf '%s\t%s\n' "$name" "$(told "$here" ${ds:+ds})"
    done | count
    tool forget >/dev/null
}

alternate "FT-PSK over the air" tesmir-ft 02:00:00:00:01:00 02:00:00:00:02:00 key_mgmt=FT-PSK
ds=1 alternate "FT-PSK over the DS" tesmir-ft-ds 02:00:00:00:03:00 02:00:00:00:04:00 \
    key_mgmt=FT-PSK
alternate "WPA2-PSK" tesmir-psk 02:00:00:00:03:01 02:00:00:00:04:01

# 802.1X: each run joins anew, roams (a full authentication) and back (the PMK cached).
for _ in $(seq "$runs"); do
    a=$(tool connect tesmir-eap eap "2412 2437" eap=PEAP identity=tesmir-user \
        password=tesmir-password phase2=auth=MSCHAPV2 "ca_cert=$certs/ca.pem" | joined)
    [ "$a" = 02:00:00:00:01:01 ] && b=02:00:00:00:02:01 || b=02:00:00:00:01:01
    printf '%s\t%s\n' "PEAP, first roam" "$(told "$b")"
    printf '%s\t%s\n' "PEAP, back on the cached PMK" "$(told "$a")"
    tool forget >/dev/null
done | count
