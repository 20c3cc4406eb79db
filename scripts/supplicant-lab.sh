#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# A throwaway wpa_supplicant on the wired driver, in a private network namespace on a veth pair,
# for the benchmarks: they time calls on this machine's own kernel and clock, which the radio lab
# (radio-lab.sh, where the tests run) does not keep. Never touches the machine's own interfaces.
# Needs root.
#
#   supplicant-lab.sh check        exit 0 if a lab can be made here, else say why
#   supplicant-lab.sh up DIR       start; prints the control socket path (DIR/ctrl/veth0)
#   supplicant-lab.sh down DIR     stop everything and remove the namespace
#   supplicant-lab.sh sweep        remove labs left behind by crashed runs
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
    for tool in ip wpa_supplicant; do
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
    [ -d "$dir" ] || die "no directory $dir"
    local ns
    ns=$(netns_of "$dir")
    mkdir -p "$dir/ctrl"
    printf 'ctrl_interface=%s/ctrl\nap_scan=0\n' "$dir" >"$dir/wpa_supplicant.conf"

    ip netns add "$ns"
    ip -n "$ns" link set lo up
    ip -n "$ns" link add veth0 type veth peer name veth1
    ip -n "$ns" link set veth0 up
    ip -n "$ns" link set veth1 up

    start_supplicant
    echo "$dir/ctrl/veth0"
}

down() {
    stop_pidfile "$dir/wpa_supplicant.pid"
    ip netns del "$(netns_of "$dir")" 2>/dev/null || true
}

sweep() {
    local ns
    for ns in $(ip netns list 2>/dev/null | awk '/^tesmir-(lab|probe)-/ {print $1}'); do
        ip netns pids "$ns" 2>/dev/null | xargs -r kill -9 2>/dev/null || true
        ip netns del "$ns" 2>/dev/null || true
    done
}

case "$cmd" in
check) check ;;
up) up ;;
down) down ;;
sweep) sweep ;;
*) die "usage: supplicant-lab.sh check | up DIR | down DIR | sweep" ;;
esac
