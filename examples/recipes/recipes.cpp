// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "recipes.h"

#include <stdlib.h>

#include <chrono>
#include <regex>

#include "WpaStringUtils.h"

namespace recipes {
namespace {

// Every waiting-mode call gives up after 3 s without an event, with this status.
constexpr int32_t kNoEvent = -22;

// The value of KEY in a reply of KEY=VALUE lines ("" when absent).
std::string Field(const std::string& reply, const std::string& key) {
    std::vector<std::string> lines;
    WpaStringUtils::SplitString(reply, '\n', lines);
    for (const std::string& line : lines) {
        if (line.compare(0, key.size() + 1, key + "=") == 0) return line.substr(key.size() + 1);
    }
    return "";
}

int Number(const std::string& text) {
    return static_cast<int>(strtol(text.c_str(), nullptr, 10));
}

// One BSS query, narrowed by MASK= to fields that fit the 63 bytes a reply may have. The BSS must
// be held: the reply for one that is not is empty, and an empty reply ends the process.
bool QueryBss(WpacliWrapper& client, const std::string& which, const char* mask,
              std::string* reply) {
    return Command(client, "BSS " + which + " MASK=" + mask, reply);
}

// With nothing held, SCAN_RESULTS is its header line alone, whose line feed the cut drops.
bool HoldsBss(WpacliWrapper& client) {
    std::string reply;
    return Command(client, "SCAN_RESULTS", &reply) && reply.find('\n') != std::string::npos;
}

// For a wait on CONNECTED whose event may be lost: whether the station has stayed associated
// through two periods of 3 s without events. One is not enough: with a wrong passphrase the
// station stays associated, without events, while the AP repeats the handshake's first message
// (hostapd sends it four times, a second apart after the first) before it gives up.
std::function<bool()> HeldAssociation(WpacliWrapper& client) {
    return [&client, held = 0]() mutable {
        held = CurrentBssid(client, nullptr) ? held + 1 : 0;
        return held >= 2;
    };
}

}  // namespace

bool Command(WpacliWrapper& client, const std::string& command, std::string* reply) {
    std::string response;
    if (client.Execute(command, "", response, false) != 0) return false;
    if (reply != nullptr) *reply = response;
    // FAIL and FAIL-BUSY, FAIL-CHECKSUM, ...; "UNKNOWN COMMAND" has lost its space.
    return response.rfind("FAIL", 0) != 0 && response != "UNKNOWNCOMMAND";
}

bool WaitForEvent(WpacliWrapper& client, const std::string& pattern, int seconds,
                  std::string* event, const std::function<bool()>& happened) {
    const std::regex matcher(pattern);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::string response;
    while (std::chrono::steady_clock::now() < deadline) {
        // Each call returns the next event to arrive, or the awaited one when it is queued
        // behind it; events after the first of one call are cut to the first one's length, so
        // |pattern| should match near the start of the event.
        const int32_t status = client.Execute("PING", pattern, response, true);
        if (status == 0 && std::regex_search(response, matcher)) {
            if (event != nullptr) *event = response;
            return true;
        }
        if (status != 0 && status != kNoEvent) return false;
        if (status == kNoEvent && happened && happened()) {
            if (event != nullptr) event->clear();
            return true;
        }
    }
    return false;
}

bool Scan(WpacliWrapper& client, const std::string& freqs) {
    // FAIL-BUSY while another scan runs.
    if (!Command(client, freqs.empty() ? "SCAN" : "SCAN freq=" + freqs)) return false;
    return WaitForEvent(client, "CTRL-EVENT-SCAN-RESULTS", 30, nullptr,
                        [&client] { return HoldsBss(client); });
}

bool ListNetworks(WpacliWrapper& client, std::vector<Bss>* found) {
    found->clear();
    // BSS FIRST is empty when nothing is held, and BSS NEXT- past the last entry: stop at the
    // last id.
    if (!HoldsBss(client)) return true;
    std::string reply;
    if (!QueryBss(client, "LAST", "0x1", &reply)) return false;
    const int last = Number(Field(reply, "id"));
    for (std::string which = "FIRST";;) {
        Bss bss;
        // id, bssid, freq, level: at most 55 bytes. Flags and the SSID, which may be long, alone.
        if (!QueryBss(client, which, "0x87", &reply)) return false;
        bss.id = Number(Field(reply, "id"));
        bss.bssid = Field(reply, "bssid");
        bss.freq = Number(Field(reply, "freq"));
        bss.level = Number(Field(reply, "level"));
        const std::string id = "ID-" + std::to_string(bss.id);
        if (!QueryBss(client, id, "0x800", &reply)) return false;
        bss.flags = Field(reply, "flags");
        if (!QueryBss(client, id, "0x1000", &reply)) return false;
        bss.ssid = Field(reply, "ssid");
        found->push_back(bss);
        if (bss.id == last) return true;
        which = "NEXT-" + std::to_string(bss.id);
    }
}

bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::string& freqs, std::string* bssid) {
    std::string id;
    if (!Command(client, "ADD_NETWORK", &id)) return false;
    std::vector<std::string> settings = {"ssid \"" + ssid + "\""};
    switch (security) {
        case Security::kOpen:
            settings.emplace_back("key_mgmt NONE");
            break;
        case Security::kWpa2Psk:
            settings.emplace_back("key_mgmt WPA-PSK");
            settings.push_back("psk \"" + passphrase + "\"");
            break;
        case Security::kWpa3Sae:
            settings.emplace_back("key_mgmt SAE");
            settings.emplace_back("ieee80211w 2");
            settings.push_back("sae_password \"" + passphrase + "\"");
            break;
    }
    // A full scan of every channel takes seconds; the network's own channels take a fraction.
    if (!freqs.empty()) settings.push_back("scan_freq " + freqs);
    const std::string set = "SET_NETWORK " + id + " ";
    for (const std::string& setting : settings) {
        if (!Command(client, set + setting)) return false;
    }
    if (!Command(client, "SELECT_NETWORK " + id)) return false;
    // A wrong passphrase ends in SSID-TEMP-DISABLED, after which the supplicant retries later.
    std::string event;
    return WaitForEvent(client, "CTRL-EVENT-CONNECTED|CTRL-EVENT-SSID-TEMP-DISABLED", 30, &event,
                        HeldAssociation(client)) &&
           event.find("SSID-TEMP-DISABLED") == std::string::npos && CurrentBssid(client, bssid);
}

bool CurrentBssid(WpacliWrapper& client, std::string* bssid) {
    // Associated, STATUS begins with "bssid=xx:xx:xx:xx:xx:xx\n"; otherwise with wpa_state=.
    // Its wpa_state line comes too late to fit once associated.
    std::string status;
    if (!Command(client, "STATUS", &status) || status.rfind("bssid=", 0) != 0) return false;
    if (bssid != nullptr) *bssid = Field(status, "bssid");
    return true;
}

bool ReadSignal(WpacliWrapper& client, Signal* signal) {
    // "RSSI=-30\nLINKSPEED=54\nNOISE=9999\nFREQUENCY=2412\n...": the first four fit.
    std::string reply;
    if (!Command(client, "SIGNAL_POLL", &reply)) return false;
    signal->rssi = Number(Field(reply, "RSSI"));
    signal->linkSpeed = Number(Field(reply, "LINKSPEED"));
    signal->freq = Number(Field(reply, "FREQUENCY"));
    return signal->freq != 0;
}

bool Disconnect(WpacliWrapper& client) {
    std::string event;
    const int32_t status = client.Execute("DISCONNECT", "CTRL-EVENT-DISCONNECTED", event, true);
    if (status == 0 && event.find("CTRL-EVENT-DISCONNECTED") != std::string::npos) return true;
    // Nothing to disconnect from: no event comes.
    return (status == 0 || status == kNoEvent) && !CurrentBssid(client, nullptr);
}

bool Reconnect(WpacliWrapper& client, std::string* bssid) {
    return Command(client, "RECONNECT") &&
           WaitForEvent(client, "CTRL-EVENT-CONNECTED", 30, nullptr, HeldAssociation(client)) &&
           CurrentBssid(client, bssid);
}

bool Roam(WpacliWrapper& client, const std::string& bssid) {
    const auto there = [&client, &bssid] {
        std::string now;
        return CurrentBssid(client, &now) && now == bssid;
    };
    return Command(client, "ROAM " + bssid) &&
           WaitForEvent(client, "CTRL-EVENT-CONNECTED", 30, nullptr, there) && there();
}

bool WaitForLinkLoss(WpacliWrapper& client, int seconds, int* reason) {
    std::string event;
    *reason = 0;
    if (!WaitForEvent(client, "CTRL-EVENT-DISCONNECTED", seconds, &event,
                      [&client] { return !CurrentBssid(client, nullptr); })) {
        return false;
    }
    // "<3>CTRL-EVENT-DISCONNECTED bssid=... reason=3 locally_generated=1"
    std::vector<std::string> words;
    WpaStringUtils::SplitString(event, ' ', words);
    for (const std::string& word : words) {
        if (word.rfind("reason=", 0) == 0) *reason = Number(word.substr(7));
    }
    return true;
}

bool Forget(WpacliWrapper& client) {
    return Command(client, "REMOVE_NETWORK all");
}

}  // namespace recipes
