// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Built with exceptions, unlike the library: std::regex reports a malformed pattern only by
// throwing, and the library, built without them, ends the process on it. The tool asks here
// first, before anything is sent. Every use of std::regex in the tool is in this file: a copy of
// its templates compiled without exceptions elsewhere could be the one the linker keeps.

#include "pattern_check.h"

#include <regex>

bool IsValidPattern(const std::string& pattern, std::string* error) {
    try {
        std::regex compiled(pattern);
        (void)compiled;
    } catch (const std::regex_error& e) {
        *error = e.what();
        return false;
    }
    return true;
}

bool PatternMatches(const std::string& pattern, const std::string& text) {
    return std::regex_search(text, std::regex(pattern));
}
