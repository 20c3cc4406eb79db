// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Moving the association within a network, and telling how it moved.

#include <string.h>

#include <regex>

#include "TesmirRecipes.h"
#include "waits.h"

namespace tesmir::recipes {
namespace {

// The events of a reassociation, in the order the supplicant sends them (events.c,
// EVENT_ASSOC), one burst: "Associated with <bssid>"; when the keys came with the reassociation
// (FT) "WPA: Key negotiation completed" at once; then CTRL-EVENT-SUBNET-STATUS-UPDATE. Without
// FT, the keys come after the AP's frames: the EAP exchange, or the handshake (states 7 and 8 on
// a build that sends states), and then "WPA: Key negotiation completed".
//
// What tells is what one call saw: it examines every event queued from its start, so nothing
// it hands back was preceded by an event its pattern matches. Between two calls the supplicant
// may go through a whole EAP exchange before it serves the next call's attach, so a call's
// first event tells nothing of what came before it.
constexpr const char* kAssociated = "Associated with ";
constexpr const char* kSubnet = "CTRL-EVENT-SUBNET-STATUS-UPDATE";
constexpr const char* kEap = "CTRL-EVENT-EAP-(STARTED|PROPOSED-METHOD|METHOD|STATUS|PEER-)";
constexpr const char* kStateChange = "CTRL-EVENT-STATE-CHANGE id=";

enum class Sign {
    kNone,
    kEap,        // an EAP exchange after the association
    kKeys,       // in the association's call, the keys before any state or EAP
    kHandshake,  // in the association's call, a state change after it (the handshake's)
    kNoKeys,     // the association's burst ended without keys
};

// A roam's calls: enough for one whose calls each return at once with the state to complete (in
// the radio lab, on its real clock, up to 22 queries in a roam), and how many in a row may show
// the same before a PING waits for the next burst instead: the AP is slow, and the queries only
// load the supplicant. In the lab a reassociation showed one state to up to 19 calls in a row;
// with a PING after 16, one that ended in the gap before it left the PING waiting out 3 s.
constexpr int kMaxCalls = 48;
constexpr int kStill = 32;

// What the flags of a BSS ("[WPA2-EAP-CCMP][ESS]", "[WPA2-PSK+FT/PSK-CCMP]") say it is.
struct Network {
    bool eap = false;  // 802.1X only
    bool psk = false;  // PSK only
    bool ft = false;   // offers FT
};

// What the calls of a roam saw.
struct Seen {
    Sign sign = Sign::kNone;
    bool sentState = false;  // a state change: a build as devices build it
    bool completed = false;  // a state change on |bssid| completed, or its keys were set
    bool keysSet = false;    // keys were set: completed, on the BSSID STATUS shows
    bool elsewhere = false;  // associated to another BSS: another client's roam, or the
                             // supplicant's own
    bool joinedRead = false;
    Network joined;  // the BSS joined, read while the AP answers
};

bool ReadNetwork(WpacliWrapper& client, const std::string& bssid, Network* network) {
    std::string reply;
    // Only for a BSS the station is associated with or roaming to, which is held.
    if (!QueryBss(client, bssid, "0x800", &reply) || reply.size() >= 63) {
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

// Whether the station is associated to |bssid|.
bool On(WpacliWrapper& client, const std::string& bssid) {
    std::string now;
    return CurrentBssid(client, &now) && now == bssid;
}

// Sends |command| (ROAM, FT_DS) in waiting mode, so that the first call is attached before the
// roam begins, and reads its bursts, a call each, until one tells. Every event behind "Associated
// with <bssid>" in a call comes cut to its 36 bytes, which places it in the association's call. A
// PSK network's association without keys is enough: its keys come from the handshake. A burst
// that comes between two calls is gone, so the later calls send STATUS: a build as devices build
// it answers with the state as an event, and the call returns at once with it, where a PING
// would wait out 3 s for a burst already gone. A state completed on |bssid|, or keys set, ends
// the roam. A build that answers without one waits as PING would: where |network| offers FT,
// whose keys come with the reassociation, before each call from the third on a direct STATUS
// ends the calls once the station is on |bssid| (not before the second: the roam has only
// begun, and the query would widen the gap in which an FT roam, done in milliseconds, ends
// unseen). Without FT, STATUS shows the BSSID from the association on, the handshake still
// ahead. False when the first call saw no event in 3 s: the command was refused (waiting mode
// drops its FAIL), or had nothing to do.
bool AwaitSign(WpacliWrapper& client, const std::string& command, const std::string& bssid,
               const Network& network, bool readJoined, Seen* seen) {
    const std::string completed = std::string("(") + kStateChange +
                                  "-?[0-9]+ state=9 BSSID=" + bssid + "|" + kKeysSetEvent +
                                  " with " + bssid + ")";
    // Ends the call, so that keys cut behind an association are known to be |bssid|'s.
    const std::string elsewhere = std::string(kAssociated) + "(?!" + bssid + ")[0-9a-f:]{17}";
    const std::string signs =
            EventPattern(std::string("(") + kKeysSetEvent + "|" + kEap + "|" + kStateChange +
                         "-?[0-9]* ?[a-z]{0,5}$|" + completed + "|" + elsewhere + ")");
    const std::regex signsMatch(signs);
    static const std::regex kPrefix("^(IFNAME=\\S+ )?<[0-9]>");
    static const std::regex kEapMatch(EventPattern(kEap));
    static const std::regex kKeysMatch(EventPattern(kKeysSetEvent));
    static const std::regex kStateMatch(EventPattern(kStateChange));
    static const std::regex kSubnetMatch(EventPattern(kSubnet));
    const std::regex completedMatch(EventPattern(completed));
    const std::regex elsewhereMatch(EventPattern(elsewhere));
    bool associated = false;  // the association's burst ended without keys
    std::string last;         // what the last call handed back
    int same = 0;             // calls in a row that handed back the same
    for (int calls = 0; calls < kMaxCalls; ++calls) {
        std::string event;
        std::smatch prefix;
        // Once associated to |bssid| with the burst unseen, and the keys with it, a call would
        // wait for nothing.
        if (calls > 1 && !seen->sentState && !associated && network.ft && On(client, bssid)) {
            return true;
        }
        // The roam began (a refused one has no event): what keys would say depends on the BSS
        // joined. Read now, not after the roam, when the supplicant, busy with its aftermath,
        // would answer late.
        if (calls == 1 && readJoined) seen->joinedRead = ReadNetwork(client, bssid, &seen->joined);
        const char* next = calls == 0 ? command.c_str() : same < kStill ? "STATUS" : "PING";
        const int32_t status = client.Execute(next, signs, event, true);
        if (calls == 0 && status == kNoEvent) return false;
        if (status != 0 || !std::regex_search(event, prefix, kPrefix)) return true;
        same = event == last ? same + 1 : 0;
        last = event;
        seen->sentState = seen->sentState || std::regex_search(event, kStateMatch);
        if (std::regex_search(event, completedMatch)) {
            seen->completed = true;
            return true;
        }
        if (std::regex_search(event, elsewhereMatch)) {
            seen->elsewhere = true;
            return true;
        }
        const bool inBurst = event.size() == prefix.length(0) + strlen(kAssociated) + 17;
        const bool keys = std::regex_search(event, kKeysMatch);
        // Keys the first call saw before the association may be the BSS's left.
        seen->keysSet = (calls > 0 || inBurst) && keys;
        if (std::regex_search(event, kEapMatch)) {
            seen->sign = Sign::kEap;
            return true;
        }
        if (associated || !inBurst) {
            // After the association, only an EAP event still tells: whether EAP came before
            // anything else, the gap does not say. Before it, the last event of a burst.
            if (std::regex_search(event, signsMatch)) return true;
            continue;
        }
        if (keys) {
            // Cut before their BSSID, but behind the association to |bssid|: one to any other
            // would have ended the call. The supplicant completed as it set them.
            seen->sign = Sign::kKeys;
            seen->completed = true;
        } else if (std::regex_search(event, kStateMatch)) {
            // A STATUS call's own state event comes behind a burst queued since its attach, cut
            // as a handshake's would be. An 802.1X network's EAP may follow it yet.
            if (strcmp(next, "STATUS") == 0 && !network.psk) {
                associated = true;
                continue;
            }
            seen->sign = Sign::kHandshake;
        } else if (!std::regex_search(event, kSubnetMatch)) {
            return true;
        } else if (network.psk) {
            // The association's burst ended here, without keys: a PSK network's come from the
            // handshake; an 802.1X network may show its EAP exchange yet.
            seen->sign = Sign::kNoKeys;
        } else {
            associated = true;
            continue;
        }
        return true;
    }
    return true;
}

RoamVia Judge(Sign sign, bool sentState, bool overDs, const Network& network) {
    const RoamVia handshake = network.eap   ? RoamVia::kCached
                              : network.psk ? RoamVia::kFull
                                            : RoamVia::kUnknown;
    switch (sign) {
        case Sign::kEap:
            return RoamVia::kFull;
        case Sign::kNoKeys:
        case Sign::kHandshake:
            return handshake;
        case Sign::kKeys:
            // A build that sends states shows the handshake's before its keys: these came with
            // the reassociation, by FT (or a driver that set them). A desktop build shows none,
            // so where FT is offered its keys may be either.
            if (sentState) {
                if (!network.ft) return RoamVia::kUnknown;
                return overDs ? RoamVia::kFtOverDs : RoamVia::kFt;
            }
            return network.ft ? RoamVia::kUnknown : handshake;
        case Sign::kNone:
            break;
    }
    return RoamVia::kUnknown;
}

// Roam() with |bssid| in lower case, as events and STATUS write it.
bool RoamTo(WpacliWrapper& client, const std::string& bssid, bool overDs, RoamVia* via) {
    CompileEventPatterns();
    // What the network is, from the BSS the station leaves, read while it is held.
    std::string from;
    Network network;
    const bool known =
            via != nullptr && CurrentBssid(client, &from) && ReadNetwork(client, from, &network);
    const std::string command = (overDs ? "FT_DS " : "ROAM ") + bssid;
    Seen seen;
    if (via == nullptr) {
        if (!Command(client, command)) return false;
    } else {
        *via = RoamVia::kUnknown;
        if (!AwaitSign(client, command, bssid, network, known, &seen) || seen.elsewhere) {
            return On(client, bssid);
        }
        // Keys set, or a build that sends no states, where a call that begins after the roam
        // ended waits out 3 s: whether the station is on |bssid| now. Not once the calls saw
        // it associate without keys: the handshake is yet to end, and the wait's first call
        // takes its keys.
        const bool keysAhead = seen.sign == Sign::kNoKeys || seen.sign == Sign::kHandshake ||
                               seen.sign == Sign::kEap;
        if (!seen.completed && !keysAhead && (seen.keysSet || !seen.sentState)) {
            seen.completed = On(client, bssid);
        }
    }
    if (!seen.completed) {
        bool sentState = false;
        Completion completion;
        completion.bssid = bssid;
        completion.sentState = &sentState;
        completion.happened = [&client, &bssid] { return On(client, bssid); };
        if (!AwaitCompleted(client, completion, nullptr)) return false;
        seen.sentState = seen.sentState || sentState;
    }
    if (!known) return true;
    if (seen.sign == Sign::kKeys) {
        // Whether FT is offered, from the BSS joined.
        if (!seen.joinedRead && !ReadNetwork(client, bssid, &seen.joined)) return true;
        network.ft = seen.joined.ft;
    }
    *via = Judge(seen.sign, seen.sentState, overDs, network);
    return true;
}

}  // namespace

bool Roam(WpacliWrapper& client, const std::string& bssid) {
    return RoamTo(client, Lower(bssid), false, nullptr);
}

bool Roam(WpacliWrapper& client, const std::string& bssid, bool overDs, RoamVia* via) {
    return RoamTo(client, Lower(bssid), overDs, via);
}

}  // namespace tesmir::recipes
