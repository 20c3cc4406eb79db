// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The recipes' reading of the supplicant's texts, over the fakes: a BSS table that answers as
// wpa_supplicant 2.10 does (an entry it does not hold: 0 bytes) and that a test may change
// between two queries, as scans, age and other clients change it on a device.

#include <stdio.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "client_test_base.h"

namespace recipes = tesmir::recipes;

namespace {

struct Entry {
    std::string bssid;
    std::string ssid;
    std::string flags = "[WPA2-PSK-CCMP][ESS]";
};

class RecipesTest : public ClientTest {
  protected:
    void SetUp() override {
        ClientTest::SetUp();
        fake::GetScript().replyTo = [this](const std::string& command) {
            std::string reply = Reply(command);
            empty_ += reply.empty();
            if (changeAfter_) changeAfter_(command);
            return reply;
        };
        OpenClient();
    }

    // The supplicant's answer to the queries ListNetworks makes.
    std::string Reply(const std::string& command) {
        if (command == "SCAN_RESULTS") {
            std::string reply = "bssid / frequency / signal level / flags / ssid\n";
            for (const auto& [id, entry] : table_) reply += entry.bssid + "\t2412\t-30\t\t\n";
            return reply;
        }
        if (command == "BSS LAST MASK=0x1") {
            return table_.empty() ? "" : "id=" + std::to_string(table_.rbegin()->first) + "\n";
        }
        int from = 0;
        unsigned mask = 0;
        if (sscanf(command.c_str(), "BSS RANGE=%d- MASK=%x", &from, &mask) != 2) return "FAIL\n";
        std::string reply;
        for (auto it = table_.lower_bound(from); it != table_.end(); ++it) {
            const Entry& e = it->second;
            if (mask & 0x1) reply += "id=" + std::to_string(it->first) + "\n";
            if (mask & 0x2) reply += "bssid=" + e.bssid + "\n";
            if (mask & 0x4) reply += "freq=2412\n";
            if (mask & 0x80) reply += "level=-30\n";
            if (mask & 0x400) {
                char hex[3];
                reply += "ie=00";
                snprintf(hex, sizeof(hex), "%02x", static_cast<unsigned>(e.ssid.size()));
                reply += hex;
                for (unsigned char c : e.ssid) {
                    snprintf(hex, sizeof(hex), "%02x", c);
                    reply += hex;
                }
                reply += "01088284\n";  // the supported rates follow
            }
            if (mask & 0x800) reply += "flags=" + e.flags + "\n";
        }
        return reply;
    }

    std::vector<recipes::Bss> List() {
        std::vector<recipes::Bss> found;
        EXPECT_TRUE(recipes::ListNetworks(*client_, &found));
        return found;
    }

    std::map<int, Entry> table_;
    std::function<void(const std::string&)> changeAfter_;
    int empty_ = 0;  // empty replies: each would have ended the process
};

TEST_F(RecipesTest, lists_each_ssid_as_its_bytes_and_says_when_it_is_cut) {
    const std::string long32 = "Caf\xc3\xa9 \xe2\x98\x95 long enough to be cut";
    table_[0] = {"02:00:00:00:01:00", "a \"quoted\" name = x"};
    table_[3] = {"02:00:00:00:02:00", long32, "[ESS]"};
    table_[12] = {"02:00:00:00:03:00", ""};
    const std::vector<recipes::Bss> found = List();
    ASSERT_EQ(3u, found.size());
    EXPECT_EQ(0, found[0].id);
    EXPECT_EQ("02:00:00:00:01:00", found[0].bssid);
    EXPECT_EQ(2412, found[0].freq);
    EXPECT_EQ(-30, found[0].level);
    EXPECT_EQ("[WPA2-PSK-CCMP][ESS]", found[0].flags);
    EXPECT_EQ("a \"quoted\" name = x", found[0].ssid);
    EXPECT_TRUE(found[0].ssidWhole);

    EXPECT_EQ("[ESS]", found[1].flags);
    EXPECT_FALSE(found[1].ssidWhole);
    EXPECT_EQ(long32.size(), found[1].ssidLength);
    EXPECT_EQ(long32.substr(0, 25), found[1].ssid);  // 63 bytes: "id=3\nie=0021" and 25 more
    EXPECT_TRUE(recipes::SsidCanBe(found[1], long32));
    EXPECT_FALSE(recipes::SsidCanBe(found[1], long32.substr(0, 25)));
    EXPECT_FALSE(recipes::SsidCanBe(found[1], long32.substr(0, 29) + "x"));

    EXPECT_EQ(12, found[2].id);
    EXPECT_TRUE(found[2].ssidWhole);  // hidden: a 0-byte SSID
    EXPECT_EQ(0, empty_);
}

TEST_F(RecipesTest, an_entry_dropped_between_two_queries_is_skipped_not_mixed) {
    table_[0] = {"02:00:00:00:01:00", "first"};
    table_[1] = {"02:00:00:00:02:00", "dropped"};
    table_[2] = {"02:00:00:00:03:00", "third", "[ESS]"};
    // Dropped after its first query, before its flags: RANGE=1- then answers for id 2.
    changeAfter_ = [this](const std::string& command) {
        if (command == "BSS RANGE=1- MASK=0x87") table_.erase(1);
    };
    const std::vector<recipes::Bss> found = List();
    ASSERT_EQ(2u, found.size());
    EXPECT_EQ("first", found[0].ssid);
    EXPECT_EQ(2, found[1].id);
    EXPECT_EQ("02:00:00:00:03:00", found[1].bssid);
    EXPECT_EQ("[ESS]", found[1].flags);
    EXPECT_EQ("third", found[1].ssid);
    EXPECT_EQ(0, empty_);
}

// Networks at the edge of range leave and come back under higher ids. One gone before its turn
// is skipped, and nothing past the last id held when the listing began is asked for.
TEST_F(RecipesTest, an_entry_gone_before_its_turn_is_skipped_not_followed_past_the_bound) {
    table_[4] = {"02:00:00:00:01:00", "old"};
    table_[5] = {"02:00:00:00:02:00", "leaving"};
    changeAfter_ = [this](const std::string& command) {
        if (command != "BSS RANGE=0- MASK=0x1") return;
        table_.erase(5);
        table_[9] = {"02:00:00:00:02:00", "back again"};
    };
    const std::vector<recipes::Bss> found = List();
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ("old", found[0].ssid);
    EXPECT_EQ(0, empty_);
}

// The newest entries are read first, so their going once read leaves every later query an entry
// to answer for; read oldest first, the next query would be empty and end the process.
TEST_F(RecipesTest, the_newest_entries_going_once_read_end_nothing) {
    table_[0] = {"02:00:00:00:01:00", "stays"};
    table_[1] = {"02:00:00:00:02:00", "goes"};
    table_[2] = {"02:00:00:00:03:00", "goes too"};
    changeAfter_ = [this](const std::string& command) {
        if (command == "BSS RANGE=1- MASK=0x401") table_.erase(table_.find(1), table_.end());
    };
    const std::vector<recipes::Bss> found = List();
    ASSERT_EQ(3u, found.size());
    EXPECT_EQ("stays", found[0].ssid);
    EXPECT_EQ("goes", found[1].ssid);
    EXPECT_EQ(2, found[2].id);
    EXPECT_EQ(0, empty_);
}

TEST_F(RecipesTest, nothing_held_sends_no_bss_query) {
    EXPECT_TRUE(List().empty());
    EXPECT_THAT(Take("request"), ::testing::ElementsAre("request 1 SCAN_RESULTS (64)"));
}

TEST(recipes, ssids_as_the_supplicant_prints_them_decode_to_their_bytes) {
    EXPECT_EQ("Caf\xc3\xa9", recipes::DecodeSsid("Caf\\xc3\\xa9"));
    EXPECT_EQ("a\"b\\c", recipes::DecodeSsid("a\\\"b\\\\c"));
    EXPECT_EQ("\033\n\r\t", recipes::DecodeSsid("\\e\\n\\r\\t"));
    EXPECT_EQ("ab\\xc", recipes::DecodeSsid("ab\\xc"));  // cut inside an escape
    EXPECT_EQ("ab\\", recipes::DecodeSsid("ab\\"));
}

TEST(recipes, fields_come_only_from_where_the_supplicant_writes_them) {
    recipes::State state;
    EXPECT_TRUE(recipes::ParseState(
            "<3>CTRL-EVENT-STATE-CHANGE id=0 state=4 BSSID=00:00:00:00:00:00 SSID=x\\\" state=9 "
            "BSSID=1",
            &state));
    EXPECT_EQ(4, state.state);
    EXPECT_TRUE(
            recipes::ParseState("IFNAME=wlan0 <3>CTRL-EVENT-CONNECTED - connection to "
                                "02:00:00:00:01:00 completed (auth) [id=2 id_str=]",
                                &state));
    EXPECT_EQ(recipes::kCompleted, state.state);
    EXPECT_EQ(2, state.id);
    EXPECT_EQ("02:00:00:00:01:00", state.bssid);
    // Cut after its BSSID, before its id.
    EXPECT_TRUE(recipes::ParseState(
            "<3>CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:01:00 completed [i", &state));
    EXPECT_EQ(recipes::kIdCut, state.id);
    // Behind a 36-byte first event it keeps only its name: completed, to a BSSID not told.
    EXPECT_TRUE(recipes::ParseState("<3>CTRL-EVENT-CONNECTED - Connection", &state));
    EXPECT_EQ(recipes::kCompleted, state.state);
    EXPECT_EQ("", state.bssid);
    // Cut before its BSSID is whole; an SSID that reads like an event.
    EXPECT_FALSE(
            recipes::ParseState("<3>CTRL-EVENT-STATE-CHANGE id=0 state=9 BSSID=02:00:0", &state));
    EXPECT_FALSE(
            recipes::ParseState("<3>SME: Trying to authenticate with 02:00:00:00:01:00 "
                                "(SSID='<3>CTRL-EVENT-CONNECTED - Connection to "
                                "02:00:00:00:01:00 completed [id=0 ')",
                                &state));
}

}  // namespace
