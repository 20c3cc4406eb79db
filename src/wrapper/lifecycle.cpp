// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <stddef.h>

// wpa_ctrl.h needs size_t but does not include stddef.h itself.
#include <wpa_ctrl.h>

#include "WpacliWrapper.h"
#include "log/tesmir_log.h"

namespace {

constexpr const char* kOpen = "Open";
constexpr const char* kClose = "Close";

}  // namespace

WpacliWrapper* GetWpacliWrapperHandle() {
    return new WpacliWrapper();
}

WpacliWrapper::~WpacliWrapper() {
    TESMIR_LOGI("[%s] Called\n", "~WpacliWrapper");
    // During destruction this is always our own Close(), whatever class the object was.
    Close();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
}

int32_t WpacliWrapper::Open(const std::string& ctrlPath) {
    TESMIR_TRACE_ENTER(kOpen);
    // A virtual call, so that a host's override of Close() runs here too.
    Close();

    mCommandConn = wpa_ctrl_open(ctrlPath.c_str());
    if (mCommandConn == nullptr) {
        TESMIR_LOGE("[%s] Unable to get wpa handle for control path: %s\n", kOpen,
                    ctrlPath.c_str());
    } else {
        mEventConn = wpa_ctrl_open(ctrlPath.c_str());
        if (mEventConn == nullptr) {
            TESMIR_LOGE("[%s] Unable to get wpa event handle for control path: %s\n", kOpen,
                        ctrlPath.c_str());
        } else {
            TESMIR_LOGI("[%s] %s interface opened\n", kOpen, ctrlPath.c_str());
            TESMIR_TRACE_EXIT(kOpen);
            return 0;
        }
    }

    // Drops the command connection if only it was opened.
    Close();
    TESMIR_TRACE_EXIT(kOpen);
    return -1;
}

void WpacliWrapper::Close() {
    TESMIR_TRACE_ENTER(kClose);
    if (mCommandConn != nullptr) {
        wpa_ctrl_close(mCommandConn);
    }
    if (mEventConn != nullptr) {
        wpa_ctrl_close(mEventConn);
    }
    mCommandConn = nullptr;
    mEventConn = nullptr;
    TESMIR_TRACE_EXIT(kClose);
}
