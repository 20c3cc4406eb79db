# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# What both labs (supplicant-lab.sh, wired; radio-lab.sh, 802.11) do alike: wait for a daemon's
# control socket, stop a daemon by its pid file. Sourced; callers define die().

# Waits up to 5 s for a socket to appear.
wait_for_socket() {  # path
    local socket=$1
    for _ in $(seq 100); do
        [ -S "$socket" ] && return 0
        sleep 0.05
    done
    die "no control socket at $socket"
}

# Sends TERM, waits up to 5 s, then KILL. A missing pid file is a daemon that never started.
stop_pidfile() {  # path
    local pidfile=$1
    [ -f "$pidfile" ] || return 0
    local pid
    pid=$(cat "$pidfile")
    rm -f "$pidfile"
    kill "$pid" 2>/dev/null || return 0
    for _ in $(seq 100); do
        kill -0 "$pid" 2>/dev/null || return 0
        sleep 0.05
    done
    kill -9 "$pid" 2>/dev/null || true
}
