# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# What both labs (supplicant-lab.sh, wired; radio-lab.sh, 802.11) do alike: wait for a daemon,
# stop a daemon by its pid file. Sourced; callers define die().

# Runs COMMAND every 50 ms until it succeeds, for up to 5 s; then gives up with WHAT.
wait_until() {  # what command...
    local what=$1
    shift
    for _ in $(seq 100); do
        "$@" && return 0
        sleep 0.05
    done
    die "$what"
}

wait_for_socket() {  # path
    wait_until "no control socket at $1" test -S "$1"
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
