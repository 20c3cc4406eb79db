// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "call_counts.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "TesmirLogLevel.h"

namespace {

constexpr uint32_t kInfo = 0x04;

std::atomic<int> gQuiet{0};
std::atomic<int> gQueries{0};
std::atomic<int> gEvents{0};
// Whether the command being executed is STATUS: "[Execute] Executing Command: %s" comes first,
// then, in waiting mode only, GetResponse's "response" or "timed out". Per thread: a connect's
// prompter sends its STATUS from a thread of its own, in direct mode.
thread_local bool gStatus = false;
// TESMIR_CALL_TRACE set: every line is also kept, with the time in ms, and written to stderr
// by ResetCounts() and as the program ends; writing it at once would slow the calls it times.
const bool gTrace = getenv("TESMIR_CALL_TRACE") != nullptr;
std::mutex gTraceMutex;
std::vector<std::string> gTraceLines;

void WriteTrace() {
    std::lock_guard<std::mutex> lock(gTraceMutex);
    for (const std::string& line : gTraceLines) fprintf(stderr, "%s\n", line.c_str());
    gTraceLines.clear();
}

struct TraceAtExit {
    ~TraceAtExit() { WriteTrace(); }
} gTraceAtExit;

void Trace(const char* fmt, va_list args) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    char line[160];
    const int n = snprintf(line, sizeof(line), "%.3f ",
                           std::chrono::duration<double, std::milli>(now).count());
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): started by the caller, unseen here
    vsnprintf(line + n, sizeof(line) - static_cast<size_t>(n), fmt, args);
    std::lock_guard<std::mutex> lock(gTraceMutex);
    gTraceLines.emplace_back(line);
}

// Every line the library writes has its function's name first.
void Count(const char* fmt, va_list args) {
    if (strstr(fmt, "Executing Command") != nullptr) {
        (void)va_arg(args, const char*);
        // Every STATUS counts, a prompter's in direct mode too: each sends the state.
        gStatus = strcmp(va_arg(args, const char*), "STATUS") == 0;
        if (gStatus) ++gQueries;
    } else if (strstr(fmt, "timed out") != nullptr) {
        ++gQuiet;
    } else if (strstr(fmt, "response (len") != nullptr) {
        // A state query hands back its answer, or an event of the supplicant's own that came
        // behind it; only an answer's form (a device build's STATE-CHANGE or "connection")
        // is taken for one, though the supplicant's own STATE-CHANGE has that form too.
        (void)va_arg(args, const char*);
        (void)va_arg(args, unsigned long);
        const char* event = va_arg(args, const char*);
        const bool answer = strstr(event, "CTRL-EVENT-STATE-CHANGE") != nullptr ||
                            strstr(event, "CTRL-EVENT-CONNECTED - connection") != nullptr;
        if (!gStatus || !answer) ++gEvents;
    }
}

}  // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier): liblog's name, replaced for the program
extern "C" __attribute__((visibility("default"))) int __android_log_print(int priority,
                                                                          const char* tag,
                                                                          const char* fmt, ...) {
    (void)priority;
    (void)tag;
    va_list args;
    va_start(args, fmt);
    if (gTrace) {
        va_list copy;
        va_copy(copy, args);
        Trace(fmt, copy);
        va_end(copy);
    }
    Count(fmt, args);
    va_end(args);
    return 0;
}

void CountCalls() {
    gTesmirLogLevel |= kInfo;
}

CallCounts Counts() {
    return {gQuiet.load(), gQueries.load(), gEvents.load()};
}

void ResetCounts() {
    WriteTrace();
    gQuiet = 0;
    gQueries = 0;
    gEvents = 0;
}
