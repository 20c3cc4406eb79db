#!/usr/bin/env bash
# Checks wpacli-host's arguments and exit codes, and drives a real supplicant with it when a lab
# can be made here (exit 77, reported as skipped, when not).
#   wpacli_host_test.sh WPACLI_HOST LAB_SCRIPT [EMULATOR]
set -uo pipefail
lab=$2
# shellcheck disable=SC2206 # the emulator, when there is one, runs the host
host=(${3:-} "$1")
failures=0

expect() {  # description expected-exit expected-stdout-regex command...
    local what=$1 code=$2 pattern=$3
    shift 3
    local out rc
    out=$("$@" 2>/dev/null)
    rc=$?
    if [ "$rc" -ne "$code" ] || ! grep -qE -- "$pattern" <<<"$out"; then
        echo "FAIL: $what: exit $rc (want $code), output: $out"
        failures=$((failures + 1))
    else
        echo "ok: $what"
    fi
}

expect "--help" 0 '^usage: wpacli-host' "${host[@]}" --help
expect "no socket" 64 '^$' "${host[@]}" PING
expect "no command" 64 '^$' "${host[@]}" -p /tmp/x
expect "bad mask" 64 '^$' "${host[@]}" -m 0xzz -p /tmp/x PING
expect "unknown option" 64 '^$' "${host[@]}" -q -p /tmp/x PING
expect "missing socket" 1 '^$' "${host[@]}" -p /nonexistent/socket PING

if ! why=$(bash "$lab" check 2>&1); then
    echo "skipped the real supplicant: $why"
    [ "$failures" -eq 0 ] && exit 77
    exit 1
fi
dir=$(mktemp -d /tmp/tesmir-lab.XXXXXX)
trap 'bash "$lab" down "$dir"; rm -rf "$dir"' EXIT
socket=$(bash "$lab" up "$dir") || exit 1

expect "direct command" 0 '^PONG$' "${host[@]}" -p "$socket" PING
expect "space removal" 0 '^UNKNOWNCOMMAND$' "${host[@]}" -p "$socket" NOT_A_COMMAND
expect "waiting mode" 0 '^<3>CTRL-EVENT-NETWORK-ADDED 0$' \
    "${host[@]}" -p "$socket" -w NETWORK-ADDED ADD_NETWORK
expect "key values" 0 '^CTRL-EVENT-NETWORK-REMOVED=0$' \
    "${host[@]}" -p "$socket" -w REMOVED -k CTRL-EVENT-NETWORK-REMOVED,absent REMOVE_NETWORK 0
expect "unmatched key" 0 '^absent=$' \
    "${host[@]}" -p "$socket" -w ADDED -k absent ADD_NETWORK
expect "no event in time" 22 '^$' "${host[@]}" -p "$socket" -w NEVER PING

[ "$failures" -eq 0 ]
