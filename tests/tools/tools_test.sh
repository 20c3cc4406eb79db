#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Checks the arguments, exit codes and output of tesmir-wpacli and tesmir-recipes against the
# real supplicant of the lab it runs in (scripts/radio-lab.sh run).
#   tools_test.sh WPACLI RECIPES LIST_HELPER [EMULATOR]   (LIST_HELPER runs under the emulator itself)
set -uo pipefail
# shellcheck disable=SC2206 # the emulator, when there is one, runs the tools
emulator=(${4:-})
wpacli=("${emulator[@]}" "$1")
recipes=("${emulator[@]}" "$2" --helper "$3")
socket=${TESMIR_LAB_SOCKET:?run it through scripts/radio-lab.sh run}
# shellcheck source=tests/tools/tools_lib.sh
. "$(dirname "$0")/tools_lib.sh"

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

# What would end the process or wait out 10 s is refused before anything is sent.
networks() { wpa_cli -p "$(dirname "$socket")" -i "$(basename "$socket")" list_networks | wc -l; }
before=$(networks)
expect "a malformed pattern" 64 '^$' "${wpacli[@]}" -p "$socket" -w '(' ADD_NETWORK
expect "a malformed key" 64 '^$' "${wpacli[@]}" -p "$socket" -w ADDED -k 'ok,[' ADD_NETWORK
[ "$(networks)" = "$before" ] || { echo "FAIL: a refused command added a network"; failures=$((failures + 1)); }
# The supplicant takes commands of up to 8192 bytes and ignores longer ones (no reply).
reply_to() {  # length: what the supplicant answers a command of that many bytes, raw
    python3 - "$socket" "$1" <<'PY'
import os, socket, sys, tempfile
path = os.path.join(tempfile.mkdtemp(), "client")
s = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
s.bind(path)
s.settimeout(2)
s.sendto(b"P" * int(sys.argv[2]), sys.argv[1])
try:
    print(s.recv(64).decode().strip())
except socket.timeout:
    print("no reply")
PY
}
expect "the supplicant's limit: 8192 bytes" 0 '^UNKNOWN COMMAND$' reply_to 8192
expect "the supplicant's limit: 8193 bytes" 0 '^no reply$' reply_to 8193
expect "a command of 8192 bytes is sent" 4 '^UNKNOWNCOMMAND$' \
    "${wpacli[@]}" -p "$socket" "$(head -c 8192 /dev/zero | tr '\0' P)"
long=$("${wpacli[@]}" -p "$socket" "$(head -c 8193 /dev/zero | tr '\0' P)" 2>&1 >/dev/null)
status=$?
judge "a command of 8193 bytes is refused (64), its message short" \
    "exit $status, said: ${long:0:300}" test "$status" -eq 64 -a "${#long}" -le 200

expect "tesmir-wpacli --help" 0 '^usage: tesmir-wpacli ' "${wpacli[@]}" --help
expect "tesmir-recipes --help" 0 '^usage: tesmir-recipes ' "${emulator[@]}" "$2" --help
expect "tesmir-list-helper --help" 0 '^usage: tesmir-list-helper \[--serve\] SOCKET$' "$3" --help

expect "recipes: unknown recipe" 64 '^$' "${recipes[@]}" "$socket" frobnicate
expect "recipes: forget" 0 '^$' "${recipes[@]}" "$socket" forget
expect "recipes: scan" 0 '^$' "${recipes[@]}" "$socket" scan 2412,2437
expect "recipes: list" 0 '^02:00:00:00:02:00 2437 -[0-9]+ \[WPA2-PSK-CCMP\]\[ESS\] tesmir$' \
    "${recipes[@]}" "$socket" list
if [ "${#emulator[@]}" -eq 0 ]; then
    # As a newcomer runs it: the helper beside the tool, in the build tree as installed.
    expect "recipes: list through the helper beside the tool" 0 \
        '^02:00:00:00:02:00 2437 -[0-9]+ \[WPA2-PSK-CCMP\]\[ESS\] tesmir$' "$2" "$socket" list
    lone=$(mktemp -d)
    cp "$2" "$lone/"
    said=$("$lone/tesmir-recipes" "$socket" list 2>&1 >/dev/null)
    status=$?
    told=no
    grep -qF "cannot start the listing helper $lone/tesmir-list-helper: No such file or directory \
(--helper PATH" <<<"$said" && told=yes
    judge "recipes: no helper beside the tool is told with the path tried (1)" \
        "exit $status, said: $said" test "$status" -eq 1 -a "$told" = yes
    rm -rf "$lone"
fi
expect "recipes: list in process" 0 '^02:00:00:00:02:00 2437 -[0-9]+ \[WPA2-PSK-CCMP\]\[ESS\] tesmir$' \
    "${recipes[@]}" --in-process "$socket" list
runs=$("${recipes[@]}" --repeat 3 "$socket" list 2>/dev/null)
started=$(sed -n 's/^run [1-3]: ok bss=[0-9]* helpers=\([0-9]*\) ended=0 hung=0 failed=0$/\1/p' \
    <<<"$runs" | tr -d '\n')
judge "recipes: list three times, the first starting the helper, the others asking it again" \
    "$runs" test "$started" = 100
# The helper's life is its host's: killed, the host leaves no helper and no client socket.
"${recipes[@]}" --repeat 100000 "$socket" list >/dev/null 2>&1 &
host=$!
helper=
for _ in $(seq 100); do helper=$(pgrep -f -- '--serve') && break; sleep 0.1; done
kill -KILL "$host"
wait "$host" 2>/dev/null
rm -f /tmp/wpa_ctrl_"$host"-*  # the host's own, which only a clean exit removes
for _ in $(seq 100); do pgrep -f -- '--serve' >/dev/null || break; sleep 0.1; done
left=$(pgrep -f -- '--serve'; ls /tmp | grep "^wpa_ctrl_$helper-")
judge "a host killed leaves no helper and no client socket" "helper $helper, left: $left" \
    test -n "$helper" -a -z "$left"
expect "recipes: an unknown option" 64 '^$' "${recipes[@]}" "$socket" list --anything
expect "recipes: an argument too many" 64 '^$' "${recipes[@]}" "$socket" list extra
expect "recipes: a repeat that is no count" 64 '^$' "${recipes[@]}" --repeat 0 "$socket" list
expect "recipes: connect" 0 '^bssid=02:00:00:00:01:00 freq=2412 rssi=-[0-9]+ linkspeed=[0-9]+$' \
    "${recipes[@]}" "$socket" connect tesmir psk tesmir-passphrase 2412
expect "recipes: open network" 0 '^bssid=02:00:00:00:04:00 freq=2462 ' \
    "${recipes[@]}" "$socket" connect tesmir-open open 2462
# The configured networks, as the connects above left them: "tesmir-open" current.
expect "recipes: networks" 0 '^1 \[CURRENT\]\? tesmir-open$' "${recipes[@]}" "$socket" networks
expect "recipes: disable" 0 '^$' "${recipes[@]}" "$socket" disable 1
expect "recipes: networks, one disabled" 0 '^1 \[DISABLED\]\? tesmir-open$' \
    "${recipes[@]}" "$socket" networks
expect "recipes: enable" 0 '^$' "${recipes[@]}" "$socket" enable 1
expect "recipes: priority" 0 '^$' "${recipes[@]}" "$socket" priority 0 5
expect "recipes: remove" 0 '^$' "${recipes[@]}" "$socket" remove 0
expect "recipes: remove what is gone" 1 '^$' "${recipes[@]}" "$socket" remove 0
expect "recipes: save without update_config" 1 '^$' "${recipes[@]}" "$socket" save
expect "recipes: an id that is no number" 64 '^$' "${recipes[@]}" "$socket" enable one
expect "recipes: a connect field of no such name" 64 '^$' \
    "${recipes[@]}" "$socket" connect tesmir eap eap=PEAP pasword=x
expect "recipes: disconnect" 0 '^$' "${recipes[@]}" "$socket" disconnect
expect "recipes: status when not associated" 1 '^$' "${recipes[@]}" "$socket" status
expect "recipes: one run of several failing" 1 '^run 2: failed$' \
    "${recipes[@]}" --repeat 2 "$socket" status
[ "$failures" -eq 0 ]
