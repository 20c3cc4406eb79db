// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// Bytes as hex digits and back: how SSIDs cross the supplicant's replies (information elements,
// SET_NETWORK ssid) and the helper's lines, whatever bytes they hold.

#include <stdio.h>
#include <stdlib.h>

#include <string>

namespace tesmir::recipes {

inline std::string Hex(const std::string& bytes) {
    std::string hex;
    for (unsigned char c : bytes) {
        char digits[3];
        snprintf(digits, sizeof(digits), "%02x", c);
        hex += digits;
    }
    return hex;
}

// The bytes of |hex|, two digits each; an odd digit at the end is left out.
inline std::string Bytes(const std::string& hex) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(strtol(hex.substr(i, 2).c_str(), nullptr, 16));
    }
    return bytes;
}

}  // namespace tesmir::recipes
