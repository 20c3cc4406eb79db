// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The configured networks over the fakes: a table that answers LIST_NETWORKS and GET_NETWORK as
// wpa_supplicant 2.10 writes them (ctrl_iface.c, config.c), and that a test may change between
// two queries, as the framework does on a device.

#include <stdio.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "client_test_base.h"
#include "hex.h"

namespace recipes = tesmir::recipes;

namespace {

struct Network {
    std::string ssid;
    std::string flags;
};

// wpa_ssid_txt(): printf_encode() of the bytes.
std::string Printed(const std::string& ssid) {
    std::string out;
    for (unsigned char c : ssid) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c >= 32 && c < 127) {
            out += static_cast<char>(c);
        } else {
            char escape[5];
            snprintf(escape, sizeof(escape), "\\x%02x", c);
            out += escape;
        }
    }
    return out;
}

// wpa_config_write_string(): quoted when every byte is printable, else hex; no line feed.
std::string Got(const std::string& ssid) {
    bool printable = true;
    for (unsigned char c : ssid) printable = printable && c >= 32 && c < 127;
    return printable ? "\"" + ssid + "\"" : tesmir::recipes::Hex(ssid);
}

class NetworksTest : public ClientTest {
  protected:
    void SetUp() override {
        ClientTest::SetUp();
        fake::GetScript().replyTo = [this](const std::string& command) {
            std::string reply = Reply(command);
            if (changeAfter_) changeAfter_(command);
            return reply;
        };
        OpenClient();
    }

    std::string Reply(const std::string& command) {
        int id = 0;
        if (sscanf(command.c_str(), "LIST_NETWORKS LAST_ID=%d", &id) == 1) {
            std::string reply = "network id / ssid / bssid / flags\n";
            for (auto it = table_.upper_bound(id); it != table_.end(); ++it) {
                reply += std::to_string(it->first) + "\t" + Printed(it->second.ssid) + "\tany\t" +
                         it->second.flags + "\n";
            }
            return reply;
        }
        char field[16];
        if (sscanf(command.c_str(), "GET_NETWORK %d %15s", &id, field) == 2 &&
            table_.count(id) != 0 && std::string(field) == "ssid") {
            return Got(table_[id].ssid);
        }
        return "FAIL\n";
    }

    std::vector<recipes::ConfiguredNetwork> List() {
        std::vector<recipes::ConfiguredNetwork> networks;
        EXPECT_TRUE(recipes::ListConfiguredNetworks(*client_, &networks));
        return networks;
    }

    std::map<int, Network> table_;
    std::function<void(const std::string&)> changeAfter_;
};

TEST_F(NetworksTest, each_ssid_comes_as_far_as_a_reply_holds_it_and_flags_are_never_made_up) {
    const std::string printable32 = "Corporate \"Secure\" Wi-Fi, fl. 12";
    const std::string utf8 = "Caf\xc3\xa9 \xe2\x98\x95 long enough to be cut";
    table_[0] = {"a", "[DISABLED]"};
    table_[1] = {"b", ""};
    table_[4] = {R"(k=v "q" \)", "[CURRENT]"};
    table_[7] = {printable32, "[DISABLED]"};
    table_[9] = {utf8, ""};
    table_[12] = {"x", "[CURRENT][TEMP-DISABLED]"};
    const std::vector<recipes::ConfiguredNetwork> networks = List();
    ASSERT_EQ(6u, networks.size());
    // Rows 0 and 1 end where the next row's beginning fits: their flags are whole, even none.
    EXPECT_EQ("a", networks[0].ssid);
    EXPECT_EQ("[DISABLED]", networks[0].flags);
    EXPECT_TRUE(networks[0].flagsWhole);
    EXPECT_EQ("", networks[1].flags);
    EXPECT_TRUE(networks[1].flagsWhole);

    EXPECT_EQ(4, networks[2].id);
    EXPECT_EQ("k=v\"q\"\\", networks[2].ssid);
    EXPECT_TRUE(networks[2].ssidWhole);
    EXPECT_TRUE(recipes::SsidCanBe(networks[2], R"(k=v "q" \)"));
    EXPECT_EQ("[CURRENT]", networks[2].flags);

    // Cut in its row, whole but for its spaces from GET_NETWORK; its flags are unknown.
    EXPECT_TRUE(networks[3].ssidWhole);
    EXPECT_TRUE(recipes::SsidCanBe(networks[3], printable32));
    EXPECT_FALSE(recipes::SsidCanBe(networks[3], printable32 + "!"));
    EXPECT_EQ("", networks[3].flags);
    EXPECT_FALSE(networks[3].flagsWhole);

    // In hex, less its last digit: the first bytes only.
    EXPECT_FALSE(networks[4].ssidWhole);
    EXPECT_TRUE(recipes::SsidCanBe(networks[4], utf8));
    EXPECT_FALSE(recipes::SsidCanBe(networks[4], "Cafe" + utf8.substr(5)));

    // The last row ends its reply: a flag cut inside is no flag, and more may have followed.
    EXPECT_EQ("[CURRENT]", networks[5].flags);
    EXPECT_FALSE(networks[5].flagsWhole);
}

TEST_F(NetworksTest, networks_removed_while_they_are_read_are_left_out) {
    table_[0] = {"first", ""};
    table_[2] = {"a network whose row is cut before its end", ""};
    table_[3] = {"removed before its row", ""};
    table_[5] = {"last", ""};
    changeAfter_ = [this](const std::string& command) {
        // The framework removes 2 after its row was read, 3 before its turn.
        if (command == "LIST_NETWORKS LAST_ID=0") table_.erase(2), table_.erase(3);
    };
    const std::vector<recipes::ConfiguredNetwork> networks = List();
    ASSERT_EQ(2u, networks.size());
    EXPECT_EQ(0, networks[0].id);
    EXPECT_EQ(5, networks[1].id);
    EXPECT_EQ("last", networks[1].ssid);
}

TEST_F(NetworksTest, an_empty_configuration_is_one_query) {
    EXPECT_TRUE(List().empty());
    EXPECT_THAT(Take("request"), ::testing::ElementsAre("request 1 LIST_NETWORKS LAST_ID=-1 (64)"));
}

}  // namespace
