// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// The radio suites' client on the lab's station (scripts/radio-lab.sh), and what they share.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"

namespace recipes = tesmir::recipes;

namespace radio {

constexpr const char* kPassphrase = "tesmir-passphrase";

inline bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// A client on the lab's station, which starts every test with no network, no BSS held, no BSS
// ignored and every access point up.
class RadioTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* dir = getenv("TESMIR_LAB_DIR");
        const char* socket = getenv("TESMIR_LAB_SOCKET");
        if (dir == nullptr || socket == nullptr) {
            GTEST_SKIP() << "needs the radio lab: scripts/radio-lab.sh run -- ...";
        }
        dir_ = dir;
        socket_ = socket;
        const char* build = getenv("TESMIR_LAB_BUILD");
        device_ = build == nullptr || strcmp(build, "desktop") != 0;
        const char* clock = getenv("TESMIR_LAB_CLOCK");
        realClock_ = clock != nullptr && strcmp(clock, "real") == 0;
        gTesmirLogLevel = 0x43;
        for (const char* ap : {"wlan1", "wlan2"}) {
            Run("hostapd_cli -p " + dir_ + "/hostapd -i " + ap + " enable");
        }
        ASSERT_EQ("OK\n", Raw("REMOVE_NETWORK all"));
        ASSERT_EQ("OK\n", Raw("BSS_FLUSH 0"));
        // A wrong passphrase puts the AP on the ignore list, which outlives its network.
        ASSERT_EQ("OK\n", Raw("BSSID_IGNORE clear"));
        client_.reset(GetWpacliWrapperHandle());
        ASSERT_EQ(0, client_->Open(socket));
    }

    // Skips the test unless the lab runs the access points of |layout| (radio-lab.sh run -a).
    void RequireLayout(const char* layout) {
        const char* running = getenv("TESMIR_LAB_APS");
        if (running == nullptr || strcmp(running, layout) != 0) {
            GTEST_SKIP() << "needs the lab's access points of radio-lab.sh run -a " << layout;
        }
    }

    static std::string Run(const std::string& command) {
        std::string out;
        FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
        char buffer[512];
        for (size_t n; pipe != nullptr && (n = fread(buffer, 1, sizeof(buffer), pipe)) > 0;) {
            out.append(buffer, n);
        }
        if (pipe != nullptr) pclose(pipe);
        return out;
    }

    // The whole reply, as wpa_cli's raw command prints it.
    std::string Raw(const std::string& command) const {
        return Run("wpa_cli -p " + dir_ + "/ctrl -i wlan0 raw " + command);
    }

    std::string Direct(const std::string& command) {
        std::string response;
        EXPECT_EQ(0, client_->Execute(command, "", response, false)) << command;
        return response;
    }

    // Waiting mode on |command|; fails the test unless the status is 0.
    std::string Waiting(const std::string& command, const std::string& pattern) {
        std::string response;
        EXPECT_EQ(0, client_->Execute(command, pattern, response, true)) << command;
        return response;
    }

    // Waiting mode on a command that starts a flow, with a pattern for the flow's end: the flow's
    // first event comes back, with nothing queued behind it yet, and |isFirst| must hold for it.
    // On the real clock a host that reads late (a loaded machine) can find more of the flow
    // queued, and the call walks on: there only an event is required.
    void ExpectFirstEvent(const std::string& command, const std::string& pattern,
                          const std::function<bool(const std::string&)>& isFirst) {
        const std::string event = Waiting(command, pattern);
        EXPECT_EQ(0u, event.rfind("<3>", 0)) << event;
        if (!realClock_) EXPECT_TRUE(isFirst(event)) << command << ": " << event;
    }

    // Waits for a completed connection, or for an association that outlasts 3 s without events.
    bool WaitConnected() {
        recipes::Wait wait;
        wait.pattern = recipes::EventPattern(
                "CTRL-EVENT-(CONNECTED - [Cc]onnection to |STATE-CHANGE id=[0-9]+ state=9 )");
        wait.askState = true;
        wait.seconds = 20;
        wait.happened = [this] { return recipes::CurrentBssid(*client_, nullptr); };
        wait.judge = [](const std::string& event) {
            recipes::State state;
            return recipes::ParseState(event, &state) && state.state == recipes::kCompleted
                           ? recipes::Verdict::kDone
                           : recipes::Verdict::kNotYet;
        };
        return recipes::Await(*client_, "PING", wait);
    }

    // Connects to the WPA2 network |ssid| of access points |a| and |b| (2412 and 2437 MHz), then
    // roams to the one it did not join, and back.
    void ExpectConnectAndRoam(const std::string& ssid, const std::string& a, const std::string& b) {
        std::string from;
        ASSERT_TRUE(recipes::Connect(*client_, ssid, recipes::Security::kWpa2Psk, kPassphrase,
                                     "2412 2437", &from));
        const std::string to = from == a ? b : a;
        ExpectRoam(to, false, recipes::RoamVia::kFull);
        ExpectRoam(from, false, recipes::RoamVia::kFull);
    }

    // Roams to |bssid|, which must be told as |via|, or kUnknown where what tells may be split
    // between two calls: on the real clock, and where |mayBeSplit|. Never another way.
    void ExpectRoam(const std::string& bssid, bool overDs, recipes::RoamVia via,
                    bool mayBeSplit = false) {
        recipes::RoamVia told = recipes::RoamVia::kUnknown;
        EXPECT_TRUE(recipes::Roam(*client_, bssid, overDs, &told));
        EXPECT_EQ(bssid, Connected());
        EXPECT_TRUE(told == via ||
                    ((realClock_ || mayBeSplit) && told == recipes::RoamVia::kUnknown))
                << bssid << ": " << static_cast<int>(told);
    }

    std::string Connected() {
        std::string bssid;
        EXPECT_TRUE(recipes::CurrentBssid(*client_, &bssid));
        return bssid;
    }

    std::string dir_;
    std::string socket_;
    bool device_ = true;  // the supplicant as devices build it
    bool realClock_ = false;
    std::unique_ptr<WpacliWrapper> client_;
};

}  // namespace radio
