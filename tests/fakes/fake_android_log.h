#pragma once

// Link-time stand-in for liblog's __android_log_print: records every message, formatted.

#include <string>
#include <vector>

namespace fake {

struct LogEntry {
    int priority;
    std::string tag;
    std::string format;
    std::string text;  // the message as printf would format it
};

std::vector<LogEntry>& Logs();

}  // namespace fake
