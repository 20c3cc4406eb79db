// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// How tesmir-list-helper hands a listing to ListNetworksIsolated(): a line for each BSS, then
// "done <count>". The SSID goes in hex, so that any byte of it crosses.
//
// Run as "tesmir-list-helper SOCKET", the helper prints one listing and ends. Run as
// "tesmir-list-helper --serve SOCKET", with a stream socket as its standard input, it keeps its
// client open and answers each kListRequest line read there with a listing, until the host's end
// closes; a request of another version gets kUnsupported. A helper of an earlier version refuses
// --serve as bad usage: the host then runs it once a listing, as before.

#include <string>
#include <vector>

#include "TesmirRecipes.h"

namespace tesmir::recipes {

constexpr const char* kServe = "--serve";
constexpr const char* kListRequest = "list 1\n";
constexpr const char* kUnsupported = "unsupported\n";

std::string BssLine(const Bss& bss);

// The BSSes of a helper's whole output; false unless it ends with its "done" line and count.
bool ParseBssLines(const std::string& output, std::vector<Bss>* found);

// Whether |output| holds a whole answer: it ends with a "done" line, or is kUnsupported.
bool AnswerIsWhole(const std::string& output);

// Sends all of |text| on the socket |fd|; false when the other side is gone. Never SIGPIPE,
// whatever the process's handlers: for host and helper alike the other's end is an outcome.
bool SendAll(int fd, const std::string& text);

}  // namespace tesmir::recipes
