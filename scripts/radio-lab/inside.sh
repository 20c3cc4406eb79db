#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# The radio lab's first process, inside the User-Mode Linux kernel that radio-lab.sh boots on the
# host's root (read-only). Makes the writable places the daemons need, starts the access points
# and the station, runs the job radio-lab.sh left in TESMIR_SHARE, writes its exit status there
# and powers off. What the job prints goes to the host's standard output and error.
export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin
# The host's standard output and error are lines 1 and 2 of UML's console (con1, con2); the
# kernel's own messages go to its standard error.
exec >/dev/tty1 2>/dev/tty2
export TMPDIR=/tmp
share=${TESMIR_SHARE:?}

die() {
    echo "radio-lab (inside): $*" >&2
    finish 1
}

# Daemons first: powering off under a running supplicant ends the kernel with SIGABRT.
finish() {  # status
    echo "$1" >"$share/status.new" && mv "$share/status.new" "$share/status"
    stop_pidfile "$lab/wpa_supplicant.pid"
    stop_pidfile "$lab/hostapd.pid"
    cp "$lab"/*.log "$share/" 2>/dev/null
    sync
    echo o >/proc/sysrq-trigger
    sleep 10
}

mount -t proc proc /proc
mount -t sysfs sysfs /sys
mountpoint -q /dev || mount -t devtmpfs devtmpfs /dev
mount -t tmpfs tmpfs /tmp
mount -t tmpfs tmpfs /run
# The project again, where the tmpfs on /tmp hides it; then the share in it, writable. From
# here on a failure is the lab's, not this machine's.
case $TESMIR_ROOT in /tmp/*)
    mkdir -p "$TESMIR_ROOT"
    mount -t hostfs none "$TESMIR_ROOT" -o "$TESMIR_ROOT"
    ;;
esac
mount -t hostfs none "$share" -o "$share"
: >"$share/booted"
# shellcheck source=scripts/lab-lib.sh
. "$TESMIR_ROOT/scripts/lab-lib.sh"
lab=/run/lab
mkdir -p "$lab"
certs=$share/certs
ip link set lo up

# shellcheck source=scripts/radio-lab/aps.sh
. "$TESMIR_ROOT/scripts/radio-lab/aps.sh"
hostapd -B -P "$lab/hostapd.pid" -f "$lab/hostapd.log" "${confs[@]}" || die "hostapd did not start"
enabled() {  # interface
    hostapd_cli -p "$lab/hostapd" -i "$1" status 2>/dev/null | grep -qx state=ENABLED
}
for ap in "${aps[@]}"; do
    wait_for_socket "$lab/hostapd/$ap"
    wait_until "access point $ap did not come up" enabled "$ap"
done

export TESMIR_LAB_DIR=$lab
"$TESMIR_ROOT/scripts/radio-lab/wifi.sh" on || finish 1

export TESMIR_LAB_CERTS=$certs TESMIR_LAB_SOCKET=$lab/ctrl/wlan0 TESMIR_LAB_WIFI=$TESMIR_ROOT/scripts/radio-lab/wifi.sh \
    TESMIR_LAB_CHURN=$TESMIR_ROOT/scripts/radio-lab/churn.sh
bash "$share/job" </dev/null
finish $?
