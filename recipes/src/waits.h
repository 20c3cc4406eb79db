// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// What the families of recipes share: reading replies, and the waits for a connection and for
// its loss built on Await().

#include <functional>
#include <string>

#include "TesmirRecipes.h"

namespace tesmir::recipes {

// The value of KEY in a reply of KEY=VALUE lines ("" when absent).
std::string Field(const std::string& reply, const std::string& key);

int Number(const std::string& text);

// Whether |event| is the event EventPattern(name) matches.
bool Matches(const std::string& event, const std::string& name);

// For a wait on a connection whose event may be lost, on a build that sends no state: whether
// the station has stayed associated through two periods of 3 s without events.
std::function<bool()> HeldAssociation(WpacliWrapper& client);

// Waits for the station to complete a connection, to |bssid| when given, on the network |id|
// (any when negative); on an event that |failure| (a pattern of EventPattern's) matches it gives
// up and puts that event in |failed|. Puts the BSSID in |connected|.
bool AwaitCompleted(WpacliWrapper& client, const std::string& bssid, int id,
                    const std::string& failure, std::function<bool()> happened,
                    std::string* connected, std::string* failed = nullptr);

// Sends |command| in waiting mode and waits up to |seconds| for the station to be disconnected:
// its DISCONNECTED event, whose reason code goes to |reason| when the event holds it (else 0),
// or a state below authenticating.
bool AwaitDisconnected(WpacliWrapper& client, const std::string& command, int seconds, int* reason);

}  // namespace tesmir::recipes
