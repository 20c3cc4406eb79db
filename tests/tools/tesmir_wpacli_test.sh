#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Checks tesmir-wpacli's arguments, exit codes and output against the real supplicant of the lab it
# runs in (scripts/radio-lab.sh run).
#   tesmir_wpacli_test.sh WPACLI_HOST [EMULATOR]
set -uo pipefail
# shellcheck disable=SC2206 # the emulator, when there is one, runs the host
host=(${2:-} "$1")
socket=${TESMIR_LAB_SOCKET:?run it through scripts/radio-lab.sh run}
failures=0

expect() {  # description expected-exit expected-stdout-regex tesmir-wpacli-arguments...
    local what=$1 code=$2 pattern=$3 out rc
    shift 3
    out=$("${host[@]}" "$@" 2>/dev/null)
    rc=$?
    if [ "$rc" -ne "$code" ] || ! grep -qE -- "$pattern" <<<"$out"; then
        echo "FAIL: $what: exit $rc (want $code), output: $out"
        failures=$((failures + 1))
    else
        echo "ok: $what"
    fi
}

expect "bad mask" 64 '^$' -m 0xzz -p "$socket" PING
expect "keys without waiting mode" 64 '^$' -p "$socket" -k x PING
expect "missing socket" 1 '^$' -p /nonexistent/socket PING
expect "direct command" 0 '^PONG$' -p "$socket" PING
expect "options after the command, as wpa_cli takes them" 0 '^PONG$' PING -p "$socket"
expect "FAIL reply" 3 '^FAIL$' -p "$socket" GET_NETWORK 99 ssid
expect "UNKNOWN COMMAND reply" 4 '^UNKNOWNCOMMAND$' -p "$socket" NOT_A_COMMAND
expect "waiting mode" 0 '^<3>CTRL-EVENT-NETWORK-ADDED 0$' -p "$socket" -w NETWORK-ADDED ADD_NETWORK
expect "keys, blanks around them trimmed" 0 '^CTRL-EVENT-NETWORK-REMOVED=0$' \
    -p "$socket" -w REMOVED -k 'absent , CTRL-EVENT-NETWORK-REMOVED ' REMOVE_NETWORK 0
expect "the last event when none matches" 5 '^<3>CTRL-EVENT-NETWORK-ADDED 0$' \
    -p "$socket" -w NEVER ADD_NETWORK
expect "no event in time" 22 '^$' -p "$socket" -w NEVER PING
[ "$failures" -eq 0 ]
