// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// What only a real wpa_supplicant shows: its replies as they really end, and its events.

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "WpacliWrapper.h"

namespace {

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
        ASSERT_EQ(0, client_->Open(dir_ + "/ctrl/veth0"));
    }

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

    // Direct mode; fails the test unless the status is 0.
    std::string Direct(const std::string& command) {
        std::string response;
        EXPECT_EQ(0, client_->Execute(command, "", response, false)) << command;
        return response;
    }

    std::string dir_;
    std::unique_ptr<WpacliWrapper> client_;
};

TEST_F(SupplicantTest, direct_replies_lose_their_last_byte_whatever_it_is) {
    const std::pair<const char*, const char*> cases[] = {
            {"PING", "PONG\n"},
            {"NOT_A_COMMAND", "UNKNOWN COMMAND\n"},
            {"IFNAME", "veth0"},  // no line feed: the blind cut takes the name's last byte
            {"GET_CAPABILITY eap", nullptr},  // longer than 64 bytes
            {"STATUS", nullptr},
    };
    for (const auto& [command, reply] : cases) {
        SCOPED_TRACE(command);
        const std::string raw = Raw(command);
        if (reply != nullptr) EXPECT_EQ(reply, raw);
        // At most 64 bytes received, the last of them dropped, every space removed.
        std::string expected = raw.substr(0, std::min<size_t>(raw.size(), 64) - 1);
        expected.erase(std::remove(expected.begin(), expected.end(), ' '), expected.end());
        EXPECT_EQ(expected, Direct(command));
        EXPECT_TRUE(reply != nullptr || raw.size() > 64);
    }
}

TEST_F(SupplicantTest, network_events_end_waiting_mode) {
    std::string response;
    ASSERT_EQ(0, client_->Execute("ADD_NETWORK", "NETWORK-ADDED", response, true));
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-ADDED 0", response);
    ASSERT_EQ(0, client_->Execute("ADD_NETWORK", "NETWORK-ADDED", response, true));
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-ADDED 1", response);
    ASSERT_EQ(0, client_->Execute("REMOVE_NETWORK 0", "NETWORK-REMOVED", response, true));
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-REMOVED 0", response);
    EXPECT_EQ("network id / ssid / bssid / flags\n1\t\tany\t[DISABLED]\n", Raw("LIST_NETWORKS"));

    // The supplicant sends the events of a command before its reply, so all are queued when the
    // wait begins. Every receive is offered the first one's 31 bytes: "...REMOVED 10" is cut.
    for (int i = 2; i <= 10; ++i) ASSERT_EQ(std::to_string(i), Direct("ADD_NETWORK"));
    ASSERT_EQ(0, client_->Execute("REMOVE_NETWORK all", "REMOVED 10", response, true));
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-REMOVED 1", response);
}

// Clients share nothing but the mask: eight at once, each sees only its own replies. Open is
// serialised, as hosts must: libwpa_client names client sockets with an unguarded counter.
TEST_F(SupplicantTest, clients_on_separate_threads_get_only_their_own_replies) {
    const std::pair<const char*, const char*> cases[] = {
            {"PING", "PONG"}, {"IFNAME", "veth"}, {"NOT_A_COMMAND", "UNKNOWNCOMMAND"}};
    std::mutex openLock;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
            {
                std::lock_guard<std::mutex> lock(openLock);
                wrong += client->Open(dir_ + "/ctrl/veth0") != 0;
            }
            std::string response;
            for (size_t i = t; i < t + 150; ++i) {
                const auto& [command, expected] = cases[i % std::size(cases)];
                wrong += client->Execute(command, "", response, false) != 0 || response != expected;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, wrong.load());
}

}  // namespace
