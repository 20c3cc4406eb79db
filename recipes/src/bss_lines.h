// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// How tesmir-list-helper hands a listing to ListNetworksIsolated(): a line for each BSS, then
// "done <count>". The SSID goes in hex, so that any byte of it crosses.

#include <string>
#include <vector>

#include "TesmirRecipes.h"

namespace tesmir::recipes {

std::string BssLine(const Bss& bss);

// The BSSes of a helper's whole output; false unless it ends with its "done" line and count.
bool ParseBssLines(const std::string& output, std::vector<Bss>* found);

}  // namespace tesmir::recipes
