// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// What the families of recipes share: reading replies, and the waits for a connection and for
// its loss built on Await().

#include <stdint.h>

#include <functional>
#include <string>

#include "TesmirRecipes.h"
#include "prompter.h"

namespace tesmir::recipes {

// Every waiting-mode call gives up after 3 s without an event, with this status.
constexpr int32_t kNoEvent = -22;

// "<3>WPA: Key negotiation completed with 02:00:00:00:01:00 [PTK=CCMP GTK=CCMP]": the supplicant
// sets the completed state in the same step, on any build (wpa_supplicant_key_neg_complete,
// src/rsn_supp/wpa.c).
constexpr const char* kKeysSetEvent = "WPA: Key negotiation completed";

// One BSS query, narrowed by MASK= to fields that fit the 63 bytes a reply may have. The BSS must
// be held: the reply for one that is not is empty, and an empty reply ends the process.
bool QueryBss(WpacliWrapper& client, const std::string& which, const char* mask,
              std::string* reply);

// The value of KEY in a reply of KEY=VALUE lines ("" when absent).
std::string Field(const std::string& reply, const std::string& key);

int Number(const std::string& text);

// |text| in lower case, as the supplicant writes BSSIDs and network field names.
std::string Lower(const std::string& text);

// Compiles the patterns the waits read events with, once per process: a flow calls it before its
// first command, so that no compile falls between two of its calls.
void CompileEventPatterns();

// For a wait on a connection whose event may be lost, on a build that sends no state: whether
// the station has stayed associated through two periods of 3 s without events.
std::function<bool()> HeldAssociation(WpacliWrapper& client);

// What a wait for a completed connection awaits, and what else may end it.
struct Completion {
    std::string bssid;  // the BSSID to complete to; any when empty
    int id = -1;        // the network's id; any when negative
    // Events (a pattern of EventPattern's) that go to |onFailure|, which may end the wait
    // (kFailed) or let it go on; without one, they end it.
    std::string failure;
    std::function<Verdict(const std::string&)> onFailure;
    // Sees every other state read (EventPattern's "STATE-CHANGE" or STATUS on a device build),
    // and may end the wait.
    std::function<Verdict(const State&)> onState;
    std::function<bool()> happened;  // Wait::happened
    int seconds = 30;
    // The state from which the connection may complete at any moment (wpa_states): then the
    // state is asked again a few milliseconds apart. From associating (5) for a handshake with a
    // key the station holds; for 802.1X from the 4-way handshake (7): the EAP exchange before it
    // takes round trips whose events would fall between those queries.
    int settlingFrom = 5;
    // Whether an event that does not end the wait is followed by a state query. Not where the
    // outcome comes as an event (EAP): the query's call is one gap more to lose it in; the state
    // is then asked only after 3 s without events, and once settling. Settling starts at a state
    // from settlingFrom on, or at an event of |settledBy| (a pattern of EventPattern's): the
    // outcome came, and the last steps follow within milliseconds.
    bool stateAfterEvents = true;
    std::string settledBy;
    // Set to whether the supplicant sent its state as events (a build as devices build it).
    bool* sentState = nullptr;
    // Prompts a call that waits for an event after a quiet while; none when null.
    Prompter* prompter = nullptr;
};

// Waits for the station to complete a connection; puts the BSSID in |connected|.
bool AwaitCompleted(WpacliWrapper& client, const Completion& completion, std::string* connected);

// Await() with Completion's settlingFrom and stateAfterEvents.
bool AwaitSettling(WpacliWrapper& client, const std::string& command, const Wait& wait,
                   const Completion& settling, std::string* event);

// Sends |command| in waiting mode and waits up to |seconds| for the station to be disconnected:
// its DISCONNECTED event, whose reason code goes to |reason| when the event holds it (else 0),
// or a state below authenticating.
bool AwaitDisconnected(WpacliWrapper& client, const std::string& command, int seconds, int* reason);

}  // namespace tesmir::recipes
