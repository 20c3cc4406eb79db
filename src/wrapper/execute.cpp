// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <stddef.h>

// wpa_ctrl.h needs size_t but does not include stddef.h itself.
#include <wpa_ctrl.h>

#include "WpaStringUtils.h"
#include "WpacliWrapper.h"
#include "log/tesmir_log.h"

namespace {

constexpr const char* kExecute = "Execute";

// Part of the contract: a direct reply reaches the caller as at most 63 bytes.
constexpr size_t kReplyBufferSize = 64;

}  // namespace

int32_t WpacliWrapper::Execute(const std::string& command, const std::string& pattern,
                               std::string& response, bool wait) {
    TESMIR_TRACE_ENTER(kExecute);
    char reply[kReplyBufferSize] = {};
    // No byte is held back for a terminator: the cut below makes one.
    size_t replyLen = sizeof(reply);

    if (wpa_ctrl_attach(mEventConn) < 0) {
        TESMIR_LOGE("[%s] Unable to attach wpa handle for recieving events.\n", kExecute);
        return -1;
    }

    TESMIR_LOGI("[%s] Executing Command: %s\n", kExecute, command.c_str());
    int32_t status = wpa_ctrl_request(mCommandConn, command.data(), command.size(), reply,
                                      &replyLen, nullptr);
    if (status < 0) {
        TESMIR_LOGE("[%s] Unable to request command execution or Invalid command.(Error: %d)\n",
                    kExecute, status);
    } else if (wait) {
        status = GetResponse(pattern, response);
        if (status < 0) {
            TESMIR_LOGE("[%s:%d] Error during wait for events %d!\n", kExecute, __LINE__, status);
        }
    } else {
        // Drops the reply's last byte unseen: the line feed of every supplicant reply. A zero
        // length wraps and a length past the buffer indexes out of it; both trap.
        reply[replyLen - 1] = '\0';
        TESMIR_LOGD("Sync Response (len-%lu): %s", replyLen, reply);
        response.assign(reply);
        WpaStringUtils::Strip(response, " ");
        status = 0;
    }

    wpa_ctrl_detach(mEventConn);
    TESMIR_TRACE_EXIT(kExecute);
    return status;
}
