// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// libtesmir_call_counts.so: call_counts.h in a program run with LD_PRELOAD, which counts from its
// start and writes "quiet queries events" to $TESMIR_COUNTS_OUT as it ends.

#include <stdio.h>
#include <stdlib.h>

#include "call_counts.h"

namespace {

__attribute__((constructor)) void Start() {
    CountCalls();
}

__attribute__((destructor)) void Write() {
    const char* path = getenv("TESMIR_COUNTS_OUT");
    FILE* file = path != nullptr ? fopen(path, "w") : nullptr;
    if (file == nullptr) return;
    const CallCounts counts = Counts();
    fprintf(file, "%d %d %d\n", counts.quiet, counts.queries, counts.events);
    fclose(file);
}

}  // namespace
