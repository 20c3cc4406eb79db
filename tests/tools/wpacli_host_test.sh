#!/usr/bin/env bash
# Checks wpacli-host's arguments, exit codes and output against the real supplicant of the lab it
# runs in (scripts/supplicant-lab.sh run).
#   wpacli_host_test.sh WPACLI_HOST [EMULATOR]
set -uo pipefail
# shellcheck disable=SC2206 # the emulator, when there is one, runs the host
host=(${2:-} "$1")
socket=${TESMIR_LAB_DIR:?run it through scripts/supplicant-lab.sh run}/ctrl/veth0
failures=0

expect() {  # description expected-exit expected-stdout-regex wpacli-host-arguments...
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
expect "missing socket" 1 '^$' -p /nonexistent/socket PING
expect "direct command" 0 '^UNKNOWNCOMMAND$' -p "$socket" NOT_A_COMMAND
expect "waiting mode" 0 '^<3>CTRL-EVENT-NETWORK-ADDED 0$' -p "$socket" -w NETWORK-ADDED ADD_NETWORK
expect "keys, blanks around them trimmed" 0 '^CTRL-EVENT-NETWORK-REMOVED=0$' \
    -p "$socket" -w REMOVED -k 'absent , CTRL-EVENT-NETWORK-REMOVED ' REMOVE_NETWORK 0
expect "unmatched key" 0 '^absent=$' -p "$socket" -w ADDED -k 'absent, x' ADD_NETWORK
expect "no event in time" 22 '^$' -p "$socket" -w NEVER PING

[ "$failures" -eq 0 ]
