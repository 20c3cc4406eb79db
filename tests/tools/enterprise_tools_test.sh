#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# tesmir-recipes' connect, its fields and outcomes, in the radio lab's enterprise layout
# (scripts/radio-lab.sh run -a enterprise).
#   enterprise_tools_test.sh RECIPES LIST_HELPER [EMULATOR]
set -uo pipefail
# shellcheck disable=SC2206 # the emulator, when there is one, runs the tool
emulator=(${3:-})
recipes=("${emulator[@]}" "$1" --helper "$2")
socket=${TESMIR_LAB_SOCKET:?run it through scripts/radio-lab.sh run -a enterprise}
certs=${TESMIR_LAB_CERTS:?}
# shellcheck source=tests/tools/tools_lib.sh
. "$(dirname "$0")/tools_lib.sh"

peap=(eap=PEAP identity=tesmir-user phase2=auth=MSCHAPV2 "ca_cert=$certs/ca.pem")
connect() { "${recipes[@]}" "$socket" connect "$@"; }
forget() { "${recipes[@]}" "$socket" forget >/dev/null 2>&1; }

# The password from standard input, out of the process list; the TTLS user's holds quotes.
expect "PEAP, the password read from standard input" 0 '^bssid=02:00:00:00:01:00 freq=2412 ' \
    connect tesmir-eap eap 2412 "${peap[@]}" password=- domain_suffix_match=tesmir.example \
    <<<"tesmir-password"
forget
expect "WPA3-Enterprise, TTLS-PAP, a password of quotes" 0 '^bssid=02:00:00:00:02:00 ' \
    connect tesmir-eap3 eap 2437 key_mgmt=WPA-EAP-SHA256 ieee80211w=2 eap=TTLS \
    "identity=tesmir quoted" "password=pa\"ss 'wörd\"" phase2=auth=PAP "ca_cert=$certs/ca.pem"
forget
outcome "a wrong password" 2 '^rejected-credentials$' \
    connect tesmir-eap eap 2412 "${peap[@]}" password=wrong
forget
# The refused certificate's cause may not reach the tool: it says "rejected" then.
outcome "a server certificate of another CA" '3|7' \
    '^(rejected-server-certificate reason=(1|-1) depth=(1|-1)|rejected)$' \
    connect tesmir-eap eap 2412 eap=PEAP identity=tesmir-user password=x "ca_cert=$certs/ca2.pem"
forget
outcome "no password" 4 '^asks-for password$' connect tesmir-eap eap 2412 "${peap[@]}"
forget
outcome "a hidden network without scan_ssid" 5 '^not-found$' \
    connect tesmir-hidden psk tesmir-passphrase 2462
forget
expect "a hidden network with scan_ssid" 0 '^bssid=02:00:00:00:03:00 ' \
    connect tesmir-hidden psk - 2462 scan_ssid=1 <<<"tesmir-passphrase"
forget
expect "OWE" 0 '^bssid=02:00:00:00:03:01 ' connect tesmir-owe owe 2462
forget
outcome "a field the supplicant refuses" 1 'refused ieee80211w' \
    connect tesmir-eap eap 2412 "${peap[@]}" ieee80211w=7
[ "$failures" -eq 0 ]
