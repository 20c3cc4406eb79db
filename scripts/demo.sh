#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# The main job, end to end, on a real 802.11 stack: installs what is missing (as root), builds,
# boots the radio lab (scripts/radio-lab.sh: wpa_supplicant on nl80211 over a simulated radio,
# beside hostapd access points) and, inside it, scans, connects to the lab's WPA2 network and
# shows the connection and its signal through tesmir-wpacli, the library's command-line tool.
# Leaves nothing running.
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

if [ "${1:-}" = --inside ]; then
    wpacli=$2 recipes=$3
    socket=$TESMIR_LAB_SOCKET
    # Waiting mode prints the first event to come (exit 5 when it does not match REGEX): call
    # again until the awaited one comes (exit 0), or until 3 s pass without events (exit 22).
    # An event sent between two calls is lost; what it announces is then read directly.
    # Patterns anchored on the event's start: an SSID may hold an event's name.
    scanned='^<[0-9]>CTRL-EVENT-SCAN-RESULTS '
    connected='^<[0-9]>CTRL-EVENT-CONNECTED - '
    disconnected='^<[0-9]>CTRL-EVENT-DISCONNECTED '
    wait_for() {  # regex
        local status
        for _ in $(seq 20); do
            status=0
            run "$wpacli" -p "$socket" -w "$1" PING || status=$?
            [ "$status" -eq 5 ] || break
        done
    }

    say "Direct mode: the reply, last byte cut and spaces removed (at most 63 bytes)"
    run "$wpacli" -p "$socket" PING
    echo "On nl80211 this reply has no line feed: the cut takes its last real byte (TKIP)"
    run "$wpacli" -p "$socket" GET_CAPABILITY pairwise

    say "Scan the lab's three channels"
    echo "Waiting mode on SCAN hands back the scan's first event, not its results (exit 5)"
    run "$wpacli" -p "$socket" -w "$scanned" SCAN freq=2412,2437,2462 || true
    wait_for "$scanned"
    echo "SCAN_RESULTS is longer than 63 bytes: a host sees its header and a piece of one line"
    run "$wpacli" -p "$socket" SCAN_RESULTS
    echo "A BSS query narrowed with MASK= fits (0x87: id, bssid, freq, level)"
    run "$wpacli" -p "$socket" BSS FIRST MASK=0x87
    echo "The list recipe reads every BSS that way (recipes/)"
    run "$recipes" "$socket" list

    say "Connect to the WPA2 network \"tesmir\""
    run "$wpacli" -p "$socket" -w NETWORK-ADDED ADD_NETWORK
    run "$wpacli" -p "$socket" SET_NETWORK 0 ssid '"tesmir"'
    run "$wpacli" -p "$socket" SET_NETWORK 0 psk '"tesmir-passphrase"'
    run "$wpacli" -p "$socket" SET_NETWORK 0 scan_freq 2412
    echo "Waiting mode on SELECT_NETWORK hands back an early event of the connection (exit 5)"
    run "$wpacli" -p "$socket" -w "$connected" SELECT_NETWORK 0 || true
    wait_for "$connected"

    say "The connection and its signal"
    echo "STATUS begins with the BSS when connected; wpa_state comes too late to fit"
    run "$wpacli" -p "$socket" STATUS
    run "$wpacli" -p "$socket" SIGNAL_POLL
    run "$wpacli" -p "$socket" LIST_NETWORKS
    run "$recipes" "$socket" status

    say "The same, with every log bit set (the host's liblog writes to stderr)"
    run "$wpacli" -p "$socket" -m 0x0f SIGNAL_POLL

    say "Disconnect: its event is the first to come, so one waiting call takes it"
    run "$wpacli" -p "$socket" -w "$disconnected" -k DISCONNECTED DISCONNECT

    say "A failure: no event arrives within 3 s (exit status 22 = EINVAL)"
    status=0
    run "$wpacli" -p "$socket" -w NEVER PING || status=$?
    echo "exit status $status"
    exit 0
fi

if [ "$(id -u)" -eq 0 ]; then
    say "Installing what is missing"
    scripts/install-deps.sh
fi

# The host build tree that scripts/test.sh uses, so that the two share their builds; its tools
# land in bin/, as installed.
say "Building the library, tesmir-wpacli and the recipes (build/bin/)"
cmake -S . -B build -G Ninja -DTESMIR_BUILD_TOOLS=ON >/dev/null
cmake --build build --target tesmir-wpacli tesmir-recipes tesmir-list-helper >/dev/null

say "Booting the radio lab: wpa_supplicant (nl80211) and four hostapd access points"
scripts/radio-lab.sh check
scripts/radio-lab.sh run -- scripts/demo.sh --inside "$PWD/build/bin/tesmir-wpacli" \
    "$PWD/build/bin/tesmir-recipes"
say "The lab has powered off; nothing is left running"
