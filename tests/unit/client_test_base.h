// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <signal.h>
#include <string.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "WpacliWrapper.h"
#include "fakes.h"

// How a check on the library's own arithmetic or indexing ends the process. Built as Soong up to
// Android 13 builds it, the check traps: SIGILL on x86-64, SIGTRAP on arm64, and abort() where
// Soong names a trap function. Built as Android 14 and later build it, the UBSan minimal runtime
// writes "ubsan: <check>" and aborts. On a device either may hold, so both signals do.
inline bool EndedByCheck(int status) {
    if (!WIFSIGNALED(status)) return false;
#if defined(__ANDROID__)
    return WTERMSIG(status) == SIGABRT || WTERMSIG(status) == SIGTRAP;
#elif defined(TESMIR_UBSAN_MINIMAL_RUNTIME)
    return WTERMSIG(status) == SIGABRT;
#elif defined(__aarch64__)
    return WTERMSIG(status) == SIGTRAP;
#else
    return WTERMSIG(status) == SIGILL;
#endif
}

// What the check leaves on stderr, as a death-test pattern: a trap leaves nothing.
inline std::string CheckMessage(const std::string& check) {
#if defined(TESMIR_UBSAN_MINIMAL_RUNTIME)
    return "ubsan: " + check;
#else
    (void)check;
    return "";
#endif
}

// A fresh client over the fakes, with the mask at its default.
class ClientTest : public ::testing::Test {
  protected:
    static constexpr const char* kPath = "/data/vendor/wifi/wpa/sockets/wlan0";
    static constexpr uint32_t kAllBits = 0xffffffff;

    void SetUp() override {
        fake::Reset();
        gTesmirLogLevel = 0x43;
        client_ = GetWpacliWrapperHandle();
    }

    void TearDown() override { delete client_; }

    // Opens the client and forgets what that wrote, so a test sees only its own calls.
    void OpenClient() {
        ASSERT_EQ(0, client_->Open(kPath));
        fake::Transcript().clear();
    }

    // The transcript since the last call (see fakes.h): whole, or the entries that begin with one
    // of |prefixes|, "L" standing for log lines. The transcript then starts afresh.
    static std::vector<std::string> Take(const std::string& prefixes = "") {
        std::vector<std::string> taken;
        for (std::string& entry : fake::Transcript()) {
            const bool log = entry[1] == ' ' && strchr("DIWE?", entry[0]) != nullptr;
            if (prefixes.empty() || (log ? prefixes == "L" : entry.rfind(prefixes, 0) == 0)) {
                taken.push_back(std::move(entry));
            }
        }
        fake::Transcript().clear();
        return taken;
    }

    WpacliWrapper* client_ = nullptr;
};
