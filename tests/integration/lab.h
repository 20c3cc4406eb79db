#pragma once

#include <stdio.h>
#include <stdlib.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "WpacliWrapper.h"

// A client opened on the real wpa_supplicant of the lab this run was started in
// (scripts/supplicant-lab.sh run): wired driver on a veth pair in a private network namespace,
// with an 802.1X authenticator (hostapd, EAP-MD5 "tesmir" / "tesmir-secret") at the other end.
// Every test starts with no network configured.
class SupplicantTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* dir = getenv("TESMIR_LAB_DIR");
        if (dir == nullptr) GTEST_SKIP() << "needs a lab: scripts/supplicant-lab.sh run -- ...";
        dir_ = dir;
        gTesmirLogLevel = 0x43;
        // On a connection of its own, so that no event of it reaches the client's.
        ASSERT_EQ("OK\n", Raw("REMOVE_NETWORK all"));
        client_.reset(GetWpacliWrapperHandle());
        ASSERT_EQ(0, client_->Open(SocketPath()));
    }

    std::string SocketPath() const { return dir_ + "/ctrl/veth0"; }

    // The whole reply to |command|, as wpa_cli's raw command prints it.
    std::string Raw(const std::string& command) const {
        std::string out;
        FILE* pipe = popen(("wpa_cli -p " + dir_ + "/ctrl -i veth0 raw " + command).c_str(), "r");
        char buffer[512];
        for (size_t n; pipe != nullptr && (n = fread(buffer, 1, sizeof(buffer), pipe)) > 0;) {
            out.append(buffer, n);
        }
        if (pipe != nullptr) pclose(pipe);
        return out;
    }

    // "stop-supplicant" or "start-supplicant" on this lab.
    bool Lab(const std::string& verb) const {
        return system(("bash " TESMIR_LAB_SCRIPT " " + verb + " " + dir_).c_str()) == 0;
    }

    // Direct mode; fails the test unless the status is 0.
    std::string Direct(const std::string& command) {
        std::string response;
        EXPECT_EQ(0, client_->Execute(command, "", response, false)) << command;
        return response;
    }

    std::string dir_;
    std::unique_ptr<WpacliWrapper> client_;
};
