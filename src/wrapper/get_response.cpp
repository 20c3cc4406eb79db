// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <errno.h>
#include <stddef.h>
#include <string.h>
#include <sys/select.h>

#include <regex>

#include <wpa_ctrl.h>

#include "WpacliWrapper.h"
#include "log/tesmir_log.h"

namespace {

constexpr const char* kGetResponse = "GetResponse";

constexpr size_t kEventBufferSize = 512;
constexpr time_t kEventWaitSeconds = 3;

}  // namespace

int32_t WpacliWrapper::GetResponse(const std::string& pattern, std::string& response) {
    TESMIR_TRACE_ENTER(kGetResponse);
    // One guard byte past what a receive may fill, so that a full buffer still ends in a NUL.
    char event[kEventBufferSize + 1] = {};
    // Set once: every later receive of this call is offered at most the previous message's
    // length.
    size_t eventLen = kEventBufferSize;
    // Set once: select() counts it down, so all waits of one call share the 3 s.
    struct timeval timeout = {kEventWaitSeconds, 0};

    const int fd = wpa_ctrl_get_fd(mEventConn);
    fd_set readSet;
    FD_ZERO(&readSet);
    FD_SET(fd, &readSet);

    int32_t status = 0;
    for (;;) {
        const int ready = select(fd + 1, &readSet, nullptr, nullptr, &timeout);
        if (ready == 0) {
            TESMIR_LOGE("[%s:%d] Async wait timed out %d -%s!", kGetResponse, __LINE__, ready,
                        strerror(errno));
            status = -EINVAL;
            break;
        }
        if (ready < 0) {
            status = ready;
            break;
        }

        memset(event, 0, sizeof(event));
        const int received = wpa_ctrl_recv(mEventConn, event, &eventLen);
        if (received < 0) {
            TESMIR_LOGE("[%s:%d] Error in recieving message %d!", kGetResponse, __LINE__, received);
            status = -EINVAL;
            break;
        }

        const std::regex matcher(pattern);
        if (std::regex_search(event, event + strlen(event), matcher)) {
            break;
        }
        // Not a match: go on only while more events are queued, else hand back this last one.
        const int pending = wpa_ctrl_pending(mEventConn);
        if (pending == 0) {
            break;
        }
        if (pending < 0) {
            status = pending;
            break;
        }
    }

    if (status == 0) {
        TESMIR_LOGI("[%s] response (len: %lu) - \n%s\n", kGetResponse, eventLen, event);
        response.assign(event);
    } else {
        TESMIR_LOGE("[%s:%d] Error in recieving events %d!", kGetResponse, __LINE__, status);
    }
    TESMIR_TRACE_EXIT(kGetResponse);
    return status;
}
