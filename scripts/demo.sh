#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# The main job, end to end: installs what is missing, builds, starts a real wpa_supplicant and an
# 802.1X authenticator in a throwaway network namespace, and drives the supplicant through
# tesmir-wpacli (the library's command-line tool). Needs root. Cleans up after itself.
set -euo pipefail
cd "$(dirname "$0")/.."

say() { printf '\n\033[1m== %s\033[0m\n' "$*"; }
# Prints the command quoted, so that it can be pasted into a shell, then runs it.
run() {
    printf '$'
    printf ' %q' "$@"
    printf '\n'
    "$@"
}

say "Installing what is missing"
scripts/install-deps.sh

say "Building the library and tesmir-wpacli"
cmake -S . -B build-demo -G Ninja -DTESMIR_BUILD_TESTS=OFF >/dev/null
cmake --build build-demo --target tesmir-wpacli >/dev/null
host=build-demo/tools/tesmir-wpacli

say "Starting wpa_supplicant (wired driver) and hostapd (802.1X, EAP-MD5) in a namespace"
scripts/supplicant-lab.sh check
lab=$(mktemp -d /tmp/tesmir-lab.XXXXXX)
trap 'say "Cleaning up"; scripts/supplicant-lab.sh down "$lab"; rm -rf "$lab"; echo done' EXIT
socket=$(scripts/supplicant-lab.sh up "$lab" --hostapd)
echo "control socket: $socket"

say "Direct mode: the reply, last byte cut and spaces removed (at most 63 bytes)"
run "$host" -p "$socket" PING
run "$host" -p "$socket" GET_CAPABILITY eap

say "Waiting mode: add a network and wait for its event"
run "$host" -p "$socket" -w NETWORK-ADDED ADD_NETWORK
for setting in "key_mgmt IEEE8021X" "eap MD5" 'identity "tesmir"' 'password "tesmir-secret"' \
    "eapol_flags 0"; do
    # shellcheck disable=SC2086 # the words of a setting are separate arguments
    run "$host" -p "$socket" SET_NETWORK 0 $setting
done

say "Enable it: the first event of the 802.1X exchange, taken apart with -k"
run "$host" -p "$socket" -w '^<3>Associated with' -k with ENABLE_NETWORK 0

say "The supplicant's state once the exchange is done"
for _ in $(seq 50); do
    state=$(wpa_cli -p "$(dirname "$socket")" -i veth0 status | grep '^wpa_state=' || true)
    [ "$state" = "wpa_state=COMPLETED" ] && break
    sleep 0.1
done
echo "${state:-wpa_state unknown} (read with wpa_cli and a full-size buffer)"

say "The same, with every log bit set (the host's liblog writes to stderr)"
run "$host" -p "$socket" -m 0x0f -w NETWORK-ADDED ADD_NETWORK

say "A failure: no event arrives within 3 s (exit status 22 = EINVAL)"
set +e
run "$host" -p "$socket" -w NEVER PING
echo "exit status $?"
set -e
