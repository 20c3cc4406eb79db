// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "WpaStringUtils.h"

namespace {

bool IsBlank(char ch) {
    return ch == ' ' || ch == '\t';
}

// Drops leading blanks and cuts every other run of blanks to its first byte, so a trailing run
// survives as one blank.
std::string NormaliseBlanks(const std::string& text) {
    std::string normalised;
    normalised.reserve(text.size());
    size_t i = 0;
    while (i < text.size() && IsBlank(text[i])) {
        ++i;
    }
    bool previousBlank = false;
    for (; i < text.size(); ++i) {
        const bool blank = IsBlank(text[i]);
        if (!(blank && previousBlank)) {
            normalised.push_back(text[i]);
        }
        previousBlank = blank;
    }
    return normalised;
}

}  // namespace

void WpaStringUtils::SplitString(const std::string& text, char delimiter,
                                 std::vector<std::string>& fields) {
    // Copied out first: |text| may be an element of |fields| and move when it grows.
    const std::string normalised = NormaliseBlanks(text);
    size_t start = 0;
    for (;;) {
        const size_t end = normalised.find(delimiter, start);
        if (end == std::string::npos) {
            fields.emplace_back(normalised, start);
            return;
        }
        fields.emplace_back(normalised, start, end - start);
        start = end + 1;
    }
}
