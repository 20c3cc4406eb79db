// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "quiet_waits.h"

#include <string.h>

#include <atomic>

namespace {
std::atomic<int> gQuietWaits{0};
}  // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier): liblog's name, replaced for the program
extern "C" __attribute__((visibility("default"))) int __android_log_print(int priority,
                                                                          const char* tag,
                                                                          const char* fmt, ...) {
    (void)priority;
    (void)tag;
    if (strstr(fmt, "timed out") != nullptr) ++gQuietWaits;
    return 0;
}

int QuietWaits() {
    return gQuietWaits.load();
}

void ResetQuietWaits() {
    gQuietWaits = 0;
}
