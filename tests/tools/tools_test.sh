#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Checks the arguments, exit codes and output of tesmir-wpacli and tesmir-recipes against the
# real supplicant of the lab it runs in (scripts/radio-lab.sh run).
#   tools_test.sh WPACLI RECIPES [EMULATOR]
set -uo pipefail
# shellcheck disable=SC2206 # the emulator, when there is one, runs the tools
emulator=(${3:-})
wpacli=("${emulator[@]}" "$1")
recipes=("${emulator[@]}" "$2")
socket=${TESMIR_LAB_SOCKET:?run it through scripts/radio-lab.sh run}
failures=0

expect() {  # description expected-exit expected-stdout-regex command...
    local what=$1 code=$2 pattern=$3 out rc
    shift 3
    out=$("$@" 2>/dev/null)
    rc=$?
    if [ "$rc" -ne "$code" ] || ! grep -qE -- "$pattern" <<<"$out"; then
        echo "FAIL: $what: exit $rc (want $code), output: $out"
        failures=$((failures + 1))
    else
        echo "ok: $what"
    fi
}

expect "bad mask" 64 '^$' "${wpacli[@]}" -m 0xzz -p "$socket" PING
expect "keys without waiting mode" 64 '^$' "${wpacli[@]}" -p "$socket" -k x PING
expect "missing socket" 1 '^$' "${wpacli[@]}" -p /nonexistent/socket PING
expect "direct command" 0 '^PONG$' "${wpacli[@]}" -p "$socket" PING
expect "options after the command, as wpa_cli takes them" 0 '^PONG$' \
    "${wpacli[@]}" PING -p "$socket"
expect "FAIL reply" 3 '^FAIL$' "${wpacli[@]}" -p "$socket" GET_NETWORK 99 ssid
expect "UNKNOWN COMMAND reply" 4 '^UNKNOWNCOMMAND$' "${wpacli[@]}" -p "$socket" NOT_A_COMMAND
expect "waiting mode" 0 '^<3>CTRL-EVENT-NETWORK-ADDED 0$' \
    "${wpacli[@]}" -p "$socket" -w NETWORK-ADDED ADD_NETWORK
expect "keys, blanks around them trimmed" 0 '^CTRL-EVENT-NETWORK-REMOVED=0$' "${wpacli[@]}" \
    -p "$socket" -w REMOVED -k 'absent , CTRL-EVENT-NETWORK-REMOVED ' REMOVE_NETWORK 0
expect "the last event when none matches" 5 '^<3>CTRL-EVENT-NETWORK-ADDED 0$' "${wpacli[@]}" \
    -p "$socket" -w NEVER ADD_NETWORK
expect "no event in time" 22 '^$' "${wpacli[@]}" -p "$socket" -w NEVER PING

expect "recipes: unknown recipe" 64 '^$' "${recipes[@]}" "$socket" frobnicate
expect "recipes: forget" 0 '^$' "${recipes[@]}" "$socket" forget
expect "recipes: scan" 0 '^$' "${recipes[@]}" "$socket" scan 2412,2437
expect "recipes: list" 0 '^02:00:00:00:02:00 2437 -[0-9]+ \[WPA2-PSK-CCMP\]\[ESS\] tesmir$' \
    "${recipes[@]}" "$socket" list
expect "recipes: connect" 0 '^bssid=02:00:00:00:01:00 freq=2412 rssi=-[0-9]+ linkspeed=[0-9]+$' \
    "${recipes[@]}" "$socket" connect tesmir psk tesmir-passphrase 2412
expect "recipes: open network" 0 '^bssid=02:00:00:00:04:00 freq=2462 ' \
    "${recipes[@]}" "$socket" connect tesmir-open open 2462
expect "recipes: disconnect" 0 '^$' "${recipes[@]}" "$socket" disconnect
expect "recipes: status when not associated" 1 '^$' "${recipes[@]}" "$socket" status
[ "$failures" -eq 0 ]
