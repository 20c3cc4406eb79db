// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// The waiting-mode calls that ended after 3 s without an event, counted from the library's error
// line ("... timed out ...") by a stand-in for liblog's __android_log_print, which this file's
// object brings into a program that uses it. The stand-in writes nothing.
int QuietWaits();
void ResetQuietWaits();
