// What only a real wpa_supplicant shows: its replies as they really end, its events, and losing it.

#include <algorithm>
#include <chrono>

#include "lab.h"

namespace {

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

TEST_F(SupplicantTest, supplicant_killed_while_open_then_back) {
    EXPECT_EQ("PONG", Direct("PING"));
    ASSERT_TRUE(Lab("stop-supplicant"));
    const auto start = std::chrono::steady_clock::now();
    std::string response = "untouched";
    EXPECT_EQ(-1, client_->Execute("PING", "", response, false));  // the attach is refused
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ("untouched", response);

    ASSERT_TRUE(Lab("start-supplicant"));
    ASSERT_EQ(0, client_->Open(SocketPath()));
    EXPECT_EQ("PONG", Direct("PING"));
}

}  // namespace
