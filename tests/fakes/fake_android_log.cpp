#include "fake_android_log.h"

#include <stdarg.h>
#include <stdio.h>

#include <android/log.h>

namespace fake {

std::vector<LogEntry>& Logs() {
    static auto* logs = new std::vector<LogEntry>();
    return *logs;
}

}  // namespace fake

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    // Larger than any message the library writes (an event is at most 512 bytes).
    char text[4096];
    va_list args;
    va_start(args, fmt);
    // The analyzer misses the va_start above.
    const int length = vsnprintf(text, sizeof(text), fmt, args);  // NOLINT(clang-analyzer-valist.*)
    va_end(args);
    fake::Logs().push_back({prio, tag, fmt, length >= 0 ? text : ""});
    return length;
}
