// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Connecting, staying connected and disconnecting.

#include <stdlib.h>

#include <chrono>
#include <thread>
#include <vector>

#include "TesmirRecipes.h"
#include "hex.h"
#include "waits.h"

namespace tesmir::recipes {

bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::string& freqs, std::string* bssid) {
    std::string id;
    if (!Command(client, "ADD_NETWORK", &id)) return false;
    // In hex: an SSID may hold quotes, spaces and any other byte.
    std::vector<std::string> settings = {"ssid " + Hex(ssid)};
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
    return AwaitCompleted(client, "", Number(id), "CTRL-EVENT-SSID-TEMP-DISABLED id=" + id + " ",
                          HeldAssociation(client), bssid);
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
    // DISCONNECTED is the first event to come; with nothing to disconnect from, none comes.
    int reason = 0;
    return AwaitDisconnected(client, "DISCONNECT", 10, &reason);
}

bool Reconnect(WpacliWrapper& client, std::string* bssid) {
    return Command(client, "RECONNECT") &&
           AwaitCompleted(client, "", -1, "", HeldAssociation(client), bssid);
}

bool WaitForLinkLoss(WpacliWrapper& client, int seconds, int* reason) {
    // The state first: a link already down ends the wait at once.
    return AwaitDisconnected(client, "STATUS", seconds, reason);
}

bool Forget(WpacliWrapper& client) {
    return Command(client, "REMOVE_NETWORK all");
}

bool Reopen(WpacliWrapper& client, const std::string& socket, int seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::string reply;
    // Until the supplicant has made its socket, Open fails (and logs an error at the default
    // mask); a socket left by a supplicant that ended opens but does not answer.
    while (client.Open(socket) != 0 || !Command(client, "PING", &reply) || reply != "PONG") {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return true;
}

}  // namespace tesmir::recipes
