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
#   radio-lab.sh supplicant BUILD            the station's binary for BUILD (below), built if need be
#   radio-lab.sh run [-t SECONDS] [-s BUILD] [-c CLOCK] [-a LAYOUT] -- COMMAND...
#       boots the lab and runs COMMAND inside it, in this directory and environment, plus
#       TESMIR_LAB_DIR, TESMIR_LAB_SOCKET (the station's control socket), TESMIR_LAB_BUILD,
#       TESMIR_LAB_CLOCK and TESMIR_LAB_APS (as chosen), TESMIR_LAB_CERTS (radio-lab/certs.sh's
#       certificates, made for this run), TESMIR_LAB_WIFI (radio-lab/wifi.sh) and
#       TESMIR_LAB_CHURN (radio-lab/churn.sh); prints what it prints and exits with its status. 77: the lab cannot start here. 124:
#       COMMAND ran past SECONDS (default 600) and the kernel was ended. Nothing is left running.
#       BUILD, the station's wpa_supplicant (default: $TESMIR_SUPPLICANT, else device):
#         device    Debian's source built as devices build it, with ANDROID defined
#                   (radio-lab/supplicant.sh): STATE-CHANGE events, events on STATUS
#         desktop   Debian's wpasupplicant package, as installed
#         PATH      a binary of your own, such as a host build of your tree's supplicant
#       LAYOUT, the access points (radio-lab/aps.sh): standard (default), hostile, enterprise,
#       roaming, crowd
#       CLOCK (default: $TESMIR_LAB_CLOCK, else simulated):
#         simulated the kernel's time-travel clock: time passes only while all wait, so runs are
#                   fast and do not depend on the machine's load; the gaps between a host's calls
#                   shrink to nothing
#         real      the machine's clock, on which everything in UML runs slower than on a device
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

supplicant() {  # build
    case $1 in
    device) "$here/radio-lab/supplicant.sh" "$build" ;;
    desktop) command -v wpa_supplicant ;;
    */*) [ -x "$1" ] || die "no supplicant binary at $1"; realpath "$1" ;;
    *) die "unknown supplicant build '$1': device, desktop or a path" ;;
    esac
}

check() {
    for tool in wpa_supplicant hostapd hostapd_cli ip; do
        command -v "$tool" >/dev/null || die "$tool is not installed (scripts/install-deps.sh)"
    done
    [ -f /usr/src/linux-source-6.1.tar.xz ] || die "linux-source-6.1 is not installed"
    # UML runs its processes under ptrace; some sandboxes forbid it.
    [ "$(cat /proc/sys/kernel/yama/ptrace_scope 2>/dev/null || echo 0)" -lt 3 ] ||
        die "ptrace is disabled here (kernel.yama.ptrace_scope=3)"
}

run() {  # seconds build clock layout command...
    local seconds=$1 build_name=$2 clock=$3 layout=$4
    shift 4
    local why linux share status binary clock_option
    if ! why=$(check 2>&1); then
        echo "skipped: no radio lab here: $why"
        exit 77
    fi
    linux=$(kernel)
    binary=$(supplicant "$build_name")
    case $clock in
    simulated) clock_option=time-travel=inf-cpu ;;
    real) clock_option= ;;
    *) die "unknown clock '$clock': simulated or real" ;;
    esac
    mkdir -p "$build"
    share=$(mktemp -d "$build/run.XXXXXX")
    # shellcheck disable=SC2064 # the path is fixed now
    trap "rm -rf '$share'" EXIT
    "$here/radio-lab/certs.sh" "$share/certs"
    {
        # The lab's own variables are set inside; a caller's (another lab's) must not hide them.
        export -p | grep -v -E '^declare -x (OLDPWD|PWD|SHLVL|_|TESMIR_LAB_[A-Z_]+)='
        printf 'export TESMIR_LAB_BUILD=%q TESMIR_LAB_CLOCK=%q TESMIR_LAB_APS=%q\n' \
            "$build_name" "$clock" "$layout"
        printf 'cd %q || exit 1\nexec' "$PWD"
        printf ' %q' "$@"
        printf '\n'
    } >"$share/job"
    # timeout ends the kernel and, through their process group, the processes it runs.
    set +e
    timeout -k 5 "$seconds" "$linux" mem=512M uml_dir="$share/uml" umid=tesmir \
        root=none rootfstype=hostfs rootflags=/ ro init="$here/radio-lab/inside.sh" \
        con=null con1=null,fd:1 con2=null,fd:2 quiet $clock_option \
        mac80211_hwsim.radios=5 mac80211_hwsim.support_p2p_device=0 \
        TESMIR_SHARE="$share" TESMIR_ROOT="$root" TESMIR_SUPPLICANT_BINARY="$binary" \
        TESMIR_LAB_APS="$layout" </dev/null
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
supplicant) supplicant "${2:-${TESMIR_SUPPLICANT:-device}}" ;;
run)
    shift
    seconds=600
    build_name=${TESMIR_SUPPLICANT:-device}
    clock=${TESMIR_LAB_CLOCK:-simulated}
    layout=standard
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        case $1 in
        -t) seconds=$2 ;;
        -s) build_name=$2 ;;
        -c) clock=$2 ;;
        -a) layout=$2 ;;
        *) die "run: unknown option $1" ;;
        esac
        shift 2
    done
    [ "${1:-}" = -- ] && shift
    [ $# -gt 0 ] || die "run: no command"
    run "$seconds" "$build_name" "$clock" "$layout" "$@"
    ;;
*) die "usage: radio-lab.sh check | kernel | supplicant BUILD | run [-t S] [-s BUILD] [-c CLOCK] [-a LAYOUT] -- COMMAND..." ;;
esac
