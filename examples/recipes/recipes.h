// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// Recipes: the usual station tasks done through WpacliWrapper, as a host on a device does them.
// Copy what you need. Each one works within the library's edges:
//  - a direct reply comes back as at most 63 bytes, its last byte dropped and its spaces
//    removed, so every query below asks for a reply that fits: BSS with MASK= for one or two
//    fields, STATUS only for its first line;
//  - a reply of 0 bytes ends the process, so nothing here sends a command that can get one
//    (BSS of an entry that is not there, BSS before any scan, BSSID_IGNORE when empty);
//  - events reach the client only while a call is in progress, and waiting mode returns the
//    first event that arrives when nothing is queued behind it, matched or not. An awaited event
//    usually comes after others, so WaitForEvent() calls again, on PING, until one matches;
//  - an event sent between two calls (the detach of one, the attach of the next) is lost. So a
//    wait also ends once the supplicant has been quiet for 3 s and a direct query shows that
//    what the event announces has happened.
// Every recipe returns false when the supplicant did not do what was asked, or a call failed.

#include <functional>
#include <string>
#include <vector>

#include "WpacliWrapper.h"

namespace recipes {

// A command in direct mode; false if the call failed or the reply is FAIL or UNKNOWN COMMAND.
bool Command(WpacliWrapper& client, const std::string& command, std::string* reply = nullptr);

// Waits up to |seconds| for an event that contains a match of |pattern|, and puts it in |event|.
// After every 3 s without events, asks |happened| (when given) whether what the event announces
// has happened anyway, its event lost between two calls; if so, returns true with |event| empty.
bool WaitForEvent(WpacliWrapper& client, const std::string& pattern, int seconds,
                  std::string* event = nullptr, const std::function<bool()>& happened = nullptr);

// Scans the given frequencies in MHz ("2412,2437"; "" for all, which takes seconds on a radio
// with 5 GHz channels) and waits for the results. Should their event be lost, settles for the
// supplicant holding results after 3 s without events: keep scans narrow, so that a scan is done
// by then.
bool Scan(WpacliWrapper& client, const std::string& freqs);

struct Bss {
    int id = -1;
    std::string bssid;
    int freq = 0;
    int level = 0;      // dBm
    std::string flags;  // "[WPA2-PSK-CCMP][ESS]"
    std::string ssid;   // as the supplicant prints it, with its spaces removed
};

// Every BSS the supplicant holds, from its last scans. Empty when it holds none.
bool ListNetworks(WpacliWrapper& client, std::vector<Bss>* found);

enum class Security { kOpen, kWpa2Psk, kWpa3Sae };

// Adds a network and connects to it, narrowing the scan to |freqs| when given ("2412 2437").
// Returns the BSSID connected to in |bssid|. The network stays configured.
bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::string& freqs, std::string* bssid);

// The BSSID of the current association, from the first line of STATUS; false when there is none.
bool CurrentBssid(WpacliWrapper& client, std::string* bssid);

struct Signal {
    int rssi = 0;       // dBm
    int linkSpeed = 0;  // Mb/s
    int freq = 0;       // MHz
};

// The link's signal (SIGNAL_POLL); false when not associated.
bool ReadSignal(WpacliWrapper& client, Signal* signal);

// Disconnects and stays so until Reconnect(). The DISCONNECTED event is the first to come, so one
// waiting-mode call takes it.
bool Disconnect(WpacliWrapper& client);

// Connects again after Disconnect(); returns the BSSID connected to.
bool Reconnect(WpacliWrapper& client, std::string* bssid);

// Moves the association to |bssid| (a BSS of the same network, seen in a scan).
bool Roam(WpacliWrapper& client, const std::string& bssid);

// Waits up to |seconds| for the link to drop (the AP going away, or a deauthentication), and
// returns the DISCONNECTED event's reason code, or 0 when the event was lost and the link is
// found gone.
bool WaitForLinkLoss(WpacliWrapper& client, int seconds, int* reason);

// Removes every configured network, which also disconnects.
bool Forget(WpacliWrapper& client);

}  // namespace recipes
