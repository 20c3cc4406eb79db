#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# A throwaway wpa_supplicant (and, on request, an 802.1X authenticator) in a private network
# namespace on a veth pair. Never touches the machine's own interfaces. Needs root.
#
#   supplicant-lab.sh check                 exit 0 if a lab can be made here, else say why
#   supplicant-lab.sh up DIR [--hostapd]    start; prints the control socket path (DIR/ctrl/veth0)
#   supplicant-lab.sh down DIR              stop everything and remove the namespace
#   supplicant-lab.sh sweep                 remove labs left behind by crashed runs
#   supplicant-lab.sh run -- COMMAND...     a lab with the authenticator for COMMAND, which finds
#                                           it in TESMIR_LAB_DIR and TESMIR_LAB_SOCKET (as in
#                                           radio-lab.sh); exits 77 where none can be made
#
# The 802.1X identity is "tesmir" with EAP-MD5 password "tesmir-secret".
set -euo pipefail

cmd=${1:-}
dir=${2:-}

die() {
    echo "supplicant-lab: $*" >&2
    exit 1
}
# shellcheck source=scripts/lab-lib.sh
. "$(dirname "$0")/lab-lib.sh"

# One namespace per lab directory, named after its whole path: two labs never share one.
netns_of() { echo "tesmir-lab-$(realpath -m "$1" | md5sum | cut -c1-12)"; }

check() {
    [ "$(id -u)" -eq 0 ] || die "needs root (network namespaces)"
    for tool in ip wpa_supplicant hostapd; do
        command -v "$tool" >/dev/null || die "$tool is not installed (scripts/install-deps.sh)"
    done
    local probe="tesmir-probe-$$"
    ip netns add "$probe" 2>/dev/null || die "cannot create a network namespace here"
    local ok=0
    ip -n "$probe" link add veth0 type veth peer name veth1 2>/dev/null || ok=1
    ip netns del "$probe"
    [ "$ok" -eq 0 ] || die "cannot create a veth pair in a network namespace here"
}

start_supplicant() {
    local ns
    ns=$(netns_of "$dir")
    ip netns exec "$ns" wpa_supplicant -B -D wired -i veth0 -c "$dir/wpa_supplicant.conf" \
        -P "$dir/wpa_supplicant.pid" -f "$dir/wpa_supplicant.log"
    wait_for_socket "$dir/ctrl/veth0"
}

up() {
    local with_hostapd=${1:-}
    [ -d "$dir" ] || die "no directory $dir"
    local ns
    ns=$(netns_of "$dir")
    mkdir -p "$dir/ctrl"
    printf 'ctrl_interface=%s/ctrl\nap_scan=0\n' "$dir" >"$dir/wpa_supplicant.conf"

    ip netns add "$ns"
    ip -n "$ns" link set lo up
    ip -n "$ns" link add veth0 type veth peer name veth1
    # A fixed, locally administered address: what the lab's supplicant reports stays the same.
    ip -n "$ns" link set veth0 address 02:00:00:00:00:01
    ip -n "$ns" link set veth0 up
    ip -n "$ns" link set veth1 up

    if [ "$with_hostapd" = "--hostapd" ]; then
        printf '"tesmir" MD5 "tesmir-secret"\n' >"$dir/eap_users"
        cat >"$dir/hostapd.conf" <<CONF
interface=veth1
driver=wired
ctrl_interface=$dir/hostapd
ieee8021x=1
eapol_version=2
eap_server=1
eap_user_file=$dir/eap_users
CONF
        ip netns exec "$ns" hostapd -B -P "$dir/hostapd.pid" -f "$dir/hostapd.log" \
            "$dir/hostapd.conf" >/dev/null
    fi
    start_supplicant
    echo "$dir/ctrl/veth0"
}

down() {
    stop_pidfile "$dir/wpa_supplicant.pid"
    stop_pidfile "$dir/hostapd.pid"
    ip netns del "$(netns_of "$dir")" 2>/dev/null || true
}

sweep() {
    local ns
    for ns in $(ip netns list 2>/dev/null | awk '/^tesmir-(lab|probe)-/ {print $1}'); do
        ip netns pids "$ns" 2>/dev/null | xargs -r kill -9 2>/dev/null || true
        ip netns del "$ns" 2>/dev/null || true
    done
}

run() {
    local why
    if ! why=$(check 2>&1); then
        echo "skipped: no supplicant lab here: $why"
        exit 77
    fi
    dir=$(mktemp -d /tmp/tesmir-lab.XXXXXX)
    trap 'down; rm -rf "$dir"' EXIT
    up --hostapd >/dev/null
    TESMIR_LAB_DIR=$dir TESMIR_LAB_SOCKET=$dir/ctrl/veth0 "$@"
}

case "$cmd" in
check) check ;;
up) up "${3:-}" ;;
down) down ;;
sweep) sweep ;;
run)
    shift 2  # "run --"
    run "$@"
    ;;
*) die "usage: supplicant-lab.sh check | up DIR [--hostapd] | down DIR | sweep | run -- COMMAND..." ;;
esac
