// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// What a program's waiting-mode calls did, counted from the library's own log lines by a
// stand-in for liblog's __android_log_print, which this file's object brings into a program that
// uses it (or, as libtesmir_call_counts.so, into one run under LD_PRELOAD). The stand-in writes
// nothing, unless TESMIR_CALL_TRACE is set: then every line goes to stderr, with the time. Counting
// needs the info bit in gTesmirLogLevel: CountCalls() sets it.
struct CallCounts {
    int quiet = 0;    // calls that ended after 3 s without an event
    int queries = 0;  // STATUS, a prompter's too: each sends every attached client the state
    int events = 0;   // events handed back, but for what a state query hands back as its answer
};

void CountCalls();
CallCounts Counts();
void ResetCounts();
