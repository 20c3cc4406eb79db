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
    va_list args;
    va_start(args, fmt);
    va_list copy;
    va_copy(copy, args);
    const int length = vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    vsnprintf(text.data(), text.size() + 1, fmt, args);
    va_end(args);
    fake::Logs().push_back({prio, tag, fmt, text});
    return length;
}
