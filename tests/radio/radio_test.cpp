// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// What a host sees on a real 802.11 stack: wpa_supplicant on nl80211 over mac80211_hwsim radios,
// beside hostapd access points (scripts/radio-lab.sh), driven through the library and through the
// recipes (recipes/). The lab runs either build of the supplicant (TESMIR_LAB_BUILD):
// as devices build it, or Debian's desktop build. Event sequences vary from run to run in which
// early event comes first: these tests state what always holds.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"
#include "radio_fixture.h"

namespace {

using radio::Has;
using radio::kPassphrase;
using radio::RadioTest;
using recipes::Security;

// The lab's access points: hwsim gives radio N the address 02:00:00:00:0N:00.
constexpr const char* kPsk1 = "02:00:00:00:01:00";  // "tesmir", WPA2-PSK, 2412 MHz (wlan1)
constexpr const char* kPsk2 = "02:00:00:00:02:00";  // "tesmir", WPA2-PSK, 2437 MHz (wlan2)
constexpr const char* kSae = "02:00:00:00:03:00";   // "tesmir-sae", WPA3-SAE, 2462 MHz
constexpr const char* kOpen = "02:00:00:00:04:00";  // "tesmir-open", open, 2462 MHz

// A connection's first event, which is never its CONNECTED.
bool NotConnected(const std::string& event) {
    return !Has(event, "CTRL-EVENT-CONNECTED");
}

TEST_F(RadioTest, direct_replies_lose_their_last_byte_whatever_it_is) {
    // GET_CAPABILITY pairwise has no line feed on nl80211; STATUS is longer than 64 bytes.
    for (const char* command :
         {"PING", "NOT_A_COMMAND", "IFNAME", "GET_CAPABILITY pairwise", "STATUS"}) {
        SCOPED_TRACE(command);
        const std::string raw = Raw(command);
        ASSERT_FALSE(raw.empty());
        std::string expected = raw.substr(0, std::min<size_t>(raw.size(), 64) - 1);
        expected.erase(std::remove(expected.begin(), expected.end(), ' '), expected.end());
        EXPECT_EQ(expected, Direct(command));
    }
    EXPECT_EQ("wlan", Direct("IFNAME"));
    EXPECT_EQ("CCMP-256GCMP-256CCMPGCMPTKI", Direct("GET_CAPABILITY pairwise"));
}

TEST_F(RadioTest, network_events_end_waiting_mode_cut_to_the_first_ones_length) {
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-ADDED 0", Waiting("ADD_NETWORK", "NETWORK-ADDED"));
    for (int i = 1; i <= 10; ++i) ASSERT_EQ(std::to_string(i), Direct("ADD_NETWORK"));
    // The supplicant sends a command's events before its reply, so all are queued when the wait
    // begins. Every receive is offered the first one's 31 bytes: "...REMOVED 10" is cut.
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-REMOVED 1", Waiting("REMOVE_NETWORK all", "REMOVED 10"));
}

// Clients share nothing but the mask: eight at once, each sees only its own replies. Open is
// serialised, as hosts must: libwpa_client names client sockets with an unguarded counter.
TEST_F(RadioTest, clients_on_separate_threads_get_only_their_own_replies) {
    const std::pair<const char*, const char*> cases[] = {
            {"PING", "PONG"}, {"IFNAME", "wlan"}, {"NOT_A_COMMAND", "UNKNOWNCOMMAND"}};
    std::mutex openLock;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
            {
                std::lock_guard<std::mutex> lock(openLock);
                wrong += client->Open(getenv("TESMIR_LAB_SOCKET")) != 0;
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

TEST_F(RadioTest, scan_then_list_every_access_point) {
    std::vector<recipes::Bss> found;
    ASSERT_TRUE(recipes::ListNetworks(*client_, &found));  // nothing held: no BSS query is sent
    EXPECT_TRUE(found.empty());

    // Waiting mode on SCAN hands back the scan's first event; its results come later. An idle
    // station on a device build also tells that it is scanning, before or after.
    ExpectFirstEvent("SCAN freq=2412,2437,2462", "CTRL-EVENT-SCAN-RESULTS",
                     [this](const std::string& first) {
                         return first == "<3>CTRL-EVENT-SCAN-STARTED " ||
                                (device_ && first == "<3>CTRL-EVENT-STATE-CHANGE id=-1 state=3 "
                                                     "BSSID=00:00:00:00:00:00 SSID=");
                     });
    ASSERT_TRUE(recipes::AwaitEvent(
            *client_, recipes::EventPattern("CTRL-EVENT-SCAN-RESULTS "),
            [&] { return recipes::ListNetworks(*client_, &found) && found.size() == 4; }, nullptr,
            10));
    ASSERT_TRUE(recipes::ListNetworks(*client_, &found));
    std::map<std::string, recipes::Bss> byBssid;
    for (const recipes::Bss& bss : found) byBssid[bss.bssid] = bss;
    ASSERT_EQ(4u, byBssid.size());
    const std::tuple<const char*, int, const char*, const char*> expected[] = {
            {kPsk1, 2412, "tesmir", "[WPA2-PSK-CCMP][ESS]"},
            {kPsk2, 2437, "tesmir", "[WPA2-PSK-CCMP][ESS]"},
            {kSae, 2462, "tesmir-sae", "[WPA2-SAE-CCMP][ESS]"},
            {kOpen, 2462, "tesmir-open", "[ESS]"}};
    for (const auto& [bssid, freq, ssid, flags] : expected) {
        SCOPED_TRACE(bssid);
        EXPECT_EQ(freq, byBssid[bssid].freq);
        EXPECT_EQ(ssid, byBssid[bssid].ssid);
        EXPECT_EQ(flags, byBssid[bssid].flags);
        EXPECT_LT(byBssid[bssid].level, 0);
    }
    EXPECT_TRUE(recipes::Scan(*client_, "2412"));
}

TEST_F(RadioTest, connects_with_wpa2_psk_wpa3_sae_and_open) {
    std::string bssid;
    EXPECT_FALSE(recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, "wrong-passphrase",
                                  "2412", &bssid));
    ASSERT_TRUE(recipes::Forget(*client_));
    EXPECT_TRUE(
            recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412", &bssid));
    EXPECT_EQ(kPsk1, bssid);
    ASSERT_TRUE(recipes::Forget(*client_));
    EXPECT_TRUE(recipes::Connect(*client_, "tesmir-sae", Security::kWpa3Sae, kPassphrase, "2462",
                                 &bssid));
    EXPECT_EQ(kSae, bssid);
    ASSERT_TRUE(recipes::Forget(*client_));
    EXPECT_TRUE(recipes::Connect(*client_, "tesmir-open", Security::kOpen, "", "2462", &bssid));
    EXPECT_EQ(kOpen, bssid);
}

TEST_F(RadioTest, state_and_signal_of_the_link) {
    recipes::Signal signal;
    EXPECT_FALSE(recipes::ReadSignal(*client_, &signal));  // FAIL when not associated
    EXPECT_FALSE(recipes::CurrentBssid(*client_, nullptr));
    ASSERT_TRUE(
            recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412", nullptr));
    ASSERT_TRUE(recipes::ReadSignal(*client_, &signal));
    EXPECT_EQ(2412, signal.freq);
    EXPECT_LT(signal.rssi, 0);
    EXPECT_GT(signal.linkSpeed, 0);
    // Connected, STATUS shows its first lines only: wpa_state comes too late to fit.
    EXPECT_EQ(0u, Direct("STATUS").rfind(std::string("bssid=") + kPsk1 + "\nfreq=2412\n", 0));
    EXPECT_FALSE(Has(Direct("STATUS"), "wpa_state"));
    EXPECT_TRUE(Has(Direct("LIST_NETWORKS"), "[CURRENT]"));
}

// The supplicant's configuration read back, changed, and what a reply cannot give back.
TEST_F(RadioTest, configured_networks_round_trip) {
    ASSERT_TRUE(
            recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412", nullptr));
    const std::string spaced = "a network name that its row cuts";
    std::string id;
    ASSERT_TRUE(recipes::Command(*client_, "ADD_NETWORK", &id));
    ASSERT_TRUE(recipes::Command(*client_, "SET_NETWORK " + id + " ssid \"" + spaced + "\""));
    std::vector<recipes::ConfiguredNetwork> networks;
    ASSERT_TRUE(recipes::ListConfiguredNetworks(*client_, &networks));
    ASSERT_EQ(2u, networks.size());
    EXPECT_EQ("tesmir", networks[0].ssid);
    EXPECT_EQ("[CURRENT]", networks[0].flags);
    EXPECT_TRUE(recipes::SsidCanBe(networks[1], spaced));
    EXPECT_EQ("", networks[1].flags);  // [DISABLED], cut off
    EXPECT_FALSE(networks[1].flagsWhole);

    EXPECT_TRUE(recipes::SetPriority(*client_, networks[0].id, 5));
    EXPECT_TRUE(recipes::DisableNetwork(*client_, networks[0].id));
    EXPECT_FALSE(recipes::CurrentBssid(*client_, nullptr));
    ASSERT_TRUE(recipes::ListConfiguredNetworks(*client_, &networks));
    EXPECT_EQ("[DISABLED]", networks[0].flags);
    EXPECT_TRUE(recipes::EnableNetwork(*client_, networks[0].id));
    EXPECT_TRUE(WaitConnected());
    EXPECT_TRUE(recipes::RemoveNetwork(*client_, networks[1].id));
    EXPECT_FALSE(recipes::RemoveNetwork(*client_, networks[1].id));
    EXPECT_FALSE(recipes::SaveConfig(*client_));  // the lab runs without update_config
    ASSERT_TRUE(recipes::ListConfiguredNetworks(*client_, &networks));
    EXPECT_EQ(1u, networks.size());
}

TEST_F(RadioTest, disconnect_and_reconnect) {
    ASSERT_TRUE(
            recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412", nullptr));
    // DISCONNECT's event is the first to come: waiting mode on the command itself gets it.
    EXPECT_EQ(0u, Waiting("DISCONNECT", "CTRL-EVENT-DISCONNECTED")
                          .rfind(std::string("<3>CTRL-EVENT-DISCONNECTED bssid=") + kPsk1, 0));
    EXPECT_FALSE(recipes::CurrentBssid(*client_, nullptr));
    // RECONNECT's CONNECTED comes after others.
    ExpectFirstEvent("RECONNECT", "CTRL-EVENT-CONNECTED", NotConnected);
    ASSERT_TRUE(WaitConnected());
    EXPECT_EQ(kPsk1, Connected());
    EXPECT_TRUE(recipes::Disconnect(*client_));
    EXPECT_TRUE(recipes::Disconnect(*client_));  // nothing to disconnect from: no event
    std::string bssid;
    EXPECT_TRUE(recipes::Reconnect(*client_, &bssid));
    EXPECT_EQ(kPsk1, bssid);
}

// A device build answers STATUS with its state as events to every attached client: a state
// query through waiting mode, whole when first. A desktop build sends none.
TEST_F(RadioTest, status_sends_the_state_as_events_on_a_device_build) {
    std::string response;
    recipes::State state;
    if (!device_) {
        EXPECT_EQ(-22, client_->Execute("STATUS", "STATE-CHANGE", response, true));
        return;
    }
    ASSERT_TRUE(recipes::QueryState(*client_, &state));
    EXPECT_EQ(-1, state.id);
    EXPECT_LT(state.state, recipes::kAuthenticating);
    ASSERT_TRUE(
            recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412", nullptr));
    EXPECT_EQ(
            std::string("<3>CTRL-EVENT-STATE-CHANGE id=0 state=9 BSSID=") + kPsk1 + " SSID=tesmir",
            Waiting("STATUS", "STATE-CHANGE"));
    // Then a CONNECTED of its own, "connection" in lower case: received into the first one's
    // length (75 bytes), it loses its tail.
    EXPECT_EQ(
            std::string("<3>CTRL-EVENT-CONNECTED - connection to ") + kPsk1 + " completed (auth) ",
            Waiting("STATUS", "CTRL-EVENT-CONNECTED"));
    ASSERT_TRUE(recipes::QueryState(*client_, &state));
    EXPECT_EQ(0, state.id);
    EXPECT_EQ(recipes::kCompleted, state.state);
    EXPECT_EQ(kPsk1, state.bssid);
    // Connected and settled, nothing else sends events: STATUS-NO_EVENTS sends none.
    EXPECT_EQ(-22, client_->Execute("STATUS-NO_EVENTS", "STATE-CHANGE", response, true))
            << response;
}

// Wi-Fi off ends the supplicant: every call fails until the host opens again on the new one,
// and the listing helper kept on the old one is replaced.
TEST_F(RadioTest, wifi_turned_off_and_on) {
    const std::string wifi = getenv("TESMIR_LAB_WIFI");
    ASSERT_TRUE(
            recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412", nullptr));
    recipes::Isolation isolation;
    isolation.helper = getenv("TESMIR_LIST_HELPER");
    isolation.milliseconds = 60000;  // a bound for a hang: under qemu a listing takes seconds
    std::vector<recipes::Bss> found;
    recipes::ListingReport report;
    ASSERT_TRUE(recipes::ListNetworksIsolated(socket_, &found, &report, isolation));
    Run(wifi + " off");
    std::string response;
    EXPECT_EQ(-1, client_->Execute("PING", "", response, false));
    std::thread on([&] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        Run(wifi + " on");
    });
    EXPECT_FALSE(recipes::Reopen(*client_, socket_, 0));
    EXPECT_TRUE(recipes::Reopen(*client_, socket_, 20));
    on.join();
    // The supplicant starts again without the network, which the host adds again.
    EXPECT_FALSE(recipes::CurrentBssid(*client_, nullptr));
    EXPECT_TRUE(
            recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412", nullptr));
    ASSERT_TRUE(recipes::ListNetworksIsolated(socket_, &found, &report, isolation));
    EXPECT_EQ(report.failed, 1) << "the kept helper, whose supplicant went away";
    EXPECT_EQ(report.helpers, 1);
    EXPECT_FALSE(found.empty());
    recipes::EndListingHelpers();
}

TEST_F(RadioTest, roams_between_access_points_of_one_network) {
    std::string from;
    ASSERT_TRUE(recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412 2437",
                                 &from));
    const std::string to = from == kPsk1 ? kPsk2 : kPsk1;
    ExpectFirstEvent("ROAM " + to, "CTRL-EVENT-CONNECTED", NotConnected);
    ASSERT_TRUE(WaitConnected());
    EXPECT_EQ(to, Connected());
    EXPECT_TRUE(recipes::Roam(*client_, from));
    EXPECT_EQ(from, Connected());
}

TEST_F(RadioTest, the_access_point_going_away) {
    std::string from;
    ASSERT_TRUE(recipes::Connect(*client_, "tesmir", Security::kWpa2Psk, kPassphrase, "2412 2437",
                                 &from));
    const std::string ap = from == kPsk1 ? "wlan1" : "wlan2";
    std::thread away([&] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        Run("hostapd_cli -p " + dir_ + "/hostapd -i " + ap + " disable");
    });
    int reason = 0;
    EXPECT_TRUE(recipes::WaitForLinkLoss(*client_, 10, &reason));
    away.join();
    // The AP deauthenticates its stations as it leaves (3); 0 where the event was lost.
    EXPECT_TRUE(reason == 3 || reason == 0) << reason;
    // The supplicant finds the network's other access point by itself.
    ASSERT_TRUE(WaitConnected());
    EXPECT_NE(from, Connected());
}

}  // namespace
