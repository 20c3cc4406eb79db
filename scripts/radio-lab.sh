#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# A throwaway 802.11 world, as a device has it: a User-Mode Linux kernel with simulated radios
# (mac80211_hwsim) booted on this machine's root, read-only, in which hostapd runs four access
# points and wpa_supplicant a station on the nl80211 driver. Needs no root; the kernel is built
# once into build-uml/ (scripts/radio-lab/kernel.sh).
#
#   radio-lab.sh check                       exit 0 if the lab can start here, else say why
#   radio-lab.sh kernel                      build the kernel if needed, print its path
#   radio-lab.sh run [-t SECONDS] -- COMMAND...
#       boots the lab and runs COMMAND inside it, in this directory and environment, plus
#       TESMIR_LAB_DIR and TESMIR_LAB_SOCKET (the station's control socket); prints what it
#       prints and exits with its status. 77: the lab cannot start here. 124: COMMAND ran past
#       SECONDS (default 600) and the kernel was ended. Nothing is left running.
#
# Inside, /tmp and /run are the kernel's own (empty); the rest is this machine's, read-only.
# The access points (hwsim gives radio N the address 02:00:00:00:0N:00):
#   wlan1  02:00:00:00:01:00  "tesmir"       WPA2-PSK "tesmir-passphrase", channel 1 (2412 MHz)
#   wlan2  02:00:00:00:02:00  "tesmir"       the same network on channel 6 (2437 MHz), to roam to
#   wlan3  02:00:00:00:03:00  "tesmir-sae"   WPA3-SAE "tesmir-passphrase", channel 11 (2462 MHz)
#   wlan4  02:00:00:00:04:00  "tesmir-open"  open, channel 11
# The station is wlan0 (02:00:00:00:00:00). hostapd's control sockets: $TESMIR_LAB_DIR/hostapd/.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
build=$root/build-uml

die() {
    echo "radio-lab: $*" >&2
    exit 1
}

kernel() { "$here/radio-lab/kernel.sh" "$build"; }

check() {
    for tool in wpa_supplicant hostapd hostapd_cli ip; do
        command -v "$tool" >/dev/null || die "$tool is not installed (scripts/install-deps.sh)"
    done
    [ -f /usr/src/linux-source-6.1.tar.xz ] || die "linux-source-6.1 is not installed"
    # UML runs its processes under ptrace; some sandboxes forbid it.
    [ "$(cat /proc/sys/kernel/yama/ptrace_scope 2>/dev/null || echo 0)" -lt 3 ] ||
        die "ptrace is disabled here (kernel.yama.ptrace_scope=3)"
}

run() {  # seconds command...
    local seconds=$1
    shift
    local why linux share status
    if ! why=$(check 2>&1); then
        echo "skipped: no radio lab here: $why"
        exit 77
    fi
    linux=$(kernel)
    mkdir -p "$build"
    share=$(mktemp -d "$build/run.XXXXXX")
    # shellcheck disable=SC2064 # the path is fixed now
    trap "rm -rf '$share'" EXIT
    {
        export -p | grep -v -E '^declare -x (OLDPWD|PWD|SHLVL|_)='
        printf 'cd %q || exit 1\nexec' "$PWD"
        printf ' %q' "$@"
        printf '\n'
    } >"$share/job"
    # timeout ends the kernel and, through their process group, the processes it runs.
    set +e
    timeout -k 5 "$seconds" "$linux" mem=512M uml_dir="$share/uml" umid=tesmir \
        root=none rootfstype=hostfs rootflags=/ ro init="$here/radio-lab/inside.sh" \
        con=null con1=null,fd:1 con2=null,fd:2 quiet time-travel=inf-cpu \
        mac80211_hwsim.radios=5 mac80211_hwsim.support_p2p_device=0 \
        TESMIR_SHARE="$share" TESMIR_ROOT="$root" </dev/null
    status=$?
    set -e
    if [ ! -f "$share/booted" ]; then
        echo "skipped: no radio lab here: the UML kernel did not start (exit $status)"
        exit 77
    fi
    if [ "$status" -eq 124 ] || [ "$status" -eq 137 ]; then
        echo "radio-lab: ended the kernel after ${seconds}s" >&2
        exit 124
    fi
    [ -f "$share/status" ] || die "the lab ended without a status (kernel exit $status)"
    status=$(cat "$share/status")
    if [ "$status" -ne 0 ]; then
        for log in "$share"/*.log; do
            [ -f "$log" ] && echo "--- last lines of $(basename "$log")" && tail -n 15 "$log"
        done >&2
    fi
    return "$status"
}

case "${1:-}" in
check) check ;;
kernel) kernel ;;
run)
    shift
    seconds=600
    if [ "${1:-}" = -t ]; then
        seconds=$2
        shift 2
    fi
    [ "${1:-}" = -- ] && shift
    [ $# -gt 0 ] || die "run: no command"
    run "$seconds" "$@"
    ;;
*) die "usage: radio-lab.sh check | kernel | run [-t SECONDS] -- COMMAND..." ;;
esac
