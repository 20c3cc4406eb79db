// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Moving the association within a network, and telling how it moved.

#include <string.h>

#include <regex>

#include "TesmirRecipes.h"
#include "waits.h"

namespace tesmir::recipes {
namespace {

// The events of a reassociation that tell how its keys came, in the order the supplicant sends
// them (events.c, EVENT_ASSOC), one burst: "Associated with <bssid>", then, when the keys came
// with the reassociation (FT), "WPA: Key negotiation completed"; then
// CTRL-EVENT-SUBNET-STATUS-UPDATE. Otherwise, in later bursts, from the AP's frames: the EAP
// exchange, or the handshake (states 7 and 8 on a build that sends states) and then the keys.
constexpr const char* kAssociated = "Associated with ";
constexpr const char* kKeysSet = "WPA: Key negotiation completed";
constexpr const char* kSubnet = "CTRL-EVENT-SUBNET-STATUS-UPDATE";
constexpr const char* kEap = "CTRL-EVENT-EAP-(STARTED|PROPOSED-METHOD|METHOD|STATUS|PEER-)";
constexpr const char* kHandshakeState = "CTRL-EVENT-STATE-CHANGE id=-?[0-9]+ state=[78]";
constexpr const char* kCompletedEvent = "CTRL-EVENT-(CONNECTED|STATE-CHANGE id=-?[0-9]+ state=9)";

enum class Sign { kNone, kKeys, kEap, kHandshake };

// Reads the bursts of a roam, a call each, until one tells. A call hands back the first match,
// or the last event queued; every event behind "Associated with <bssid>" in a call comes cut to
// its length, which tells that it came in the association's burst.
Sign AwaitSign(WpacliWrapper& client) {
    static const std::string kSigns =
            EventPattern(std::string("(") + kKeysSet + "|" + kSubnet + "|" + kEap + "|" +
                         kHandshakeState + "|" + kCompletedEvent + ")");
    static const std::regex kPrefix("^(IFNAME=\\S+ )?<[0-9]>");
    bool associated = false;  // the association's burst came, without the keys
    for (int calls = 0; calls < 8; ++calls) {
        std::string event;
        std::smatch prefix;
        if (client.Execute("PING", kSigns, event, true) != 0 ||
            !std::regex_search(event, prefix, kPrefix)) {
            return Sign::kNone;
        }
        const bool inBurst = event.size() == prefix.length(0) + strlen(kAssociated) + 17;
        if (Matches(event, kEap)) return Sign::kEap;
        if (Matches(event, kKeysSet)) {
            return inBurst ? Sign::kKeys : associated ? Sign::kHandshake : Sign::kNone;
        }
        if (Matches(event, kHandshakeState)) return associated ? Sign::kHandshake : Sign::kNone;
        if (Matches(event, kSubnet)) {
            // Whole, it was the first of its call: the burst's keys, if any, were lost.
            if (!inBurst) return Sign::kNone;
            associated = true;
        } else if (Matches(event, kCompletedEvent)) {
            return Sign::kNone;  // what told came between two calls
        }
        // Otherwise the last event of a burst before the association.
    }
    return Sign::kNone;
}

// What the target's flags say the network is: "[WPA2-EAP-CCMP][ESS]", "[WPA2-PSK+FT/PSK-CCMP]".
struct Network {
    bool eap = false;  // 802.1X only
    bool psk = false;  // PSK only
    bool ft = false;   // offers FT
};

bool ReadNetwork(WpacliWrapper& client, const std::string& bssid, Network* network) {
    std::string reply;
    // The BSS the station is associated with stays in the supplicant's table.
    if (!Command(client, "BSS " + bssid + " MASK=0x800", &reply) || reply.size() >= 63) {
        return false;
    }
    const std::string flags = Field(reply, "flags");
    const bool eap = flags.find("EAP") != std::string::npos;
    const bool psk = flags.find("PSK") != std::string::npos;
    const bool other = flags.find("SAE") != std::string::npos ||
                       flags.find("OWE") != std::string::npos ||
                       flags.find("FILS") != std::string::npos;
    network->eap = eap && !psk && !other;
    network->psk = psk && !eap && !other;
    network->ft = flags.find("FT/") != std::string::npos;
    return true;
}

RoamVia Judge(Sign sign, bool overDs, const Network& network) {
    switch (sign) {
        case Sign::kEap:
            return RoamVia::kFull;
        case Sign::kHandshake:
            return network.eap   ? RoamVia::kCached
                   : network.psk ? RoamVia::kFull
                                 : RoamVia::kUnknown;
        case Sign::kKeys:
            // Keys with the reassociation: FT, or a driver that sets them itself.
            if (!network.ft) return RoamVia::kUnknown;
            return overDs ? RoamVia::kFtOverDs : RoamVia::kFt;
        case Sign::kNone:
            break;
    }
    return RoamVia::kUnknown;
}

}  // namespace

bool Roam(WpacliWrapper& client, const std::string& bssid) {
    return Roam(client, bssid, false, nullptr);
}

bool Roam(WpacliWrapper& client, const std::string& bssid, bool overDs, RoamVia* via) {
    if (via != nullptr) *via = RoamVia::kUnknown;
    if (!Command(client, (overDs ? "FT_DS " : "ROAM ") + bssid)) return false;
    // Only when asked: a lost burst costs a call's 3 s.
    const Sign sign = via != nullptr ? AwaitSign(client) : Sign::kNone;
    Completion completion;
    completion.bssid = bssid;
    completion.happened = [&client, &bssid] {
        std::string now;
        return CurrentBssid(client, &now) && now == bssid;
    };
    if (!AwaitCompleted(client, completion, nullptr)) return false;
    Network network;
    if (via != nullptr && ReadNetwork(client, bssid, &network)) {
        *via = Judge(sign, overDs, network);
    }
    return true;
}

}  // namespace tesmir::recipes
