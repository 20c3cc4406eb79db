// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>

#include <string>

#include <android/log.h>

#include "fakes.h"

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    const int savedErrno = errno;  // as liblog: a log call leaves errno alone
    char text[4096];               // more than any message (an event is at most 512 bytes)
    va_list args;
    va_start(args, fmt);
    const int length = vsnprintf(text, sizeof(text), fmt, args);  // NOLINT(clang-analyzer-valist.*)
    va_end(args);

    const char letter = prio >= 0 && prio <= ANDROID_LOG_ERROR ? "???DIWE"[prio] : '?';
    std::string line = std::string(1, letter) +
                       (std::string(tag) == "WpacliWrapper" ? " " : " <wrong tag> ") + text;
    // "[Open:42]" becomes "[Open:N]": line numbers follow the source.
    const size_t colon = line.find(':');
    const size_t close = line.find(']');
    if (!fake::GetScript().lineNumbers && line[2] == '[' && colon < close &&
        close != std::string::npos) {
        line.replace(colon + 1, close - colon - 1, "N");
    }
    fake::Transcript().push_back(line);
    errno = savedErrno;
    return length;
}
