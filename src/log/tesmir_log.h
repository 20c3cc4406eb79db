// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <stdint.h>

#include <android/log.h>

#include "TesmirLogLevel.h"

namespace tesmir {

constexpr const char* kLogTag = "WpacliWrapper";

constexpr uint32_t kLogError = 0x01;
constexpr uint32_t kLogInfo = 0x04;
constexpr uint32_t kLogTrace = 0x08;

// One load of the mask per message statement: the host may change it between two statements,
// and the compiler must not fold the two tests into one read.
inline bool LogEnabled(uint32_t bit) {
    return (*static_cast<volatile const uint32_t*>(&gTesmirLogLevel) & bit) != 0;
}

}  // namespace tesmir

// The arguments are evaluated only when the message is written; __android_log_print's format
// attribute type-checks every call.
#define TESMIR_LOG(bit, priority, ...)                                       \
    do {                                                                     \
        if (::tesmir::LogEnabled(bit)) {                                     \
            __android_log_print((priority), ::tesmir::kLogTag, __VA_ARGS__); \
        }                                                                    \
    } while (0)

// Prefixed: <syslog.h> owns LOG_INFO and LOG_ERR.
#define TESMIR_LOGE(...) TESMIR_LOG(::tesmir::kLogError, ANDROID_LOG_ERROR, __VA_ARGS__)
#define TESMIR_LOGI(...) TESMIR_LOG(::tesmir::kLogInfo, ANDROID_LOG_INFO, __VA_ARGS__)
#define TESMIR_LOGD(...) TESMIR_LOG(::tesmir::kLogTrace, ANDROID_LOG_DEBUG, __VA_ARGS__)

// Entry and exit lines of the traced methods; each prints the line of its own statement.
#define TESMIR_TRACE_ENTER(name) TESMIR_LOGD("[%s:%d] >>", (name), __LINE__)
#define TESMIR_TRACE_EXIT(name) TESMIR_LOGD("[%s:%d] <<", (name), __LINE__)
