// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <algorithm>
#include <iterator>

#include "WpaStringUtils.h"

void WpaStringUtils::Strip(const std::string& input, char ch, std::string& output) {
    std::string result;
    result.reserve(input.size());
    std::remove_copy(input.begin(), input.end(), std::back_inserter(result), ch);
    // Assigned only after |input| was read in full, which makes input == output safe.
    output = std::move(result);
}

void WpaStringUtils::Strip(std::string& str, char ch) {
    str.erase(std::remove(str.begin(), str.end(), ch), str.end());
}

void WpaStringUtils::Strip(const std::string& input, const std::string& set, std::string& output) {
    output = input;
    Strip(output, set);
}

void WpaStringUtils::Strip(std::string& str, const std::string& set) {
    // |set| may be |str| itself: its length and bytes are read anew at every pass, after the
    // passes before have shortened it. A range-for would keep iterators that the passes invalidate.
    for (size_t i = 0; i < set.size(); ++i) {  // NOLINT(modernize-loop-convert)
        Strip(str, set[i]);
    }
}
