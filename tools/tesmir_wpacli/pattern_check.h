// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <string>

// Whether |pattern| compiles as an ECMAScript regex, as the library compiles it; if not, why, in
// |error|.
bool IsValidPattern(const std::string& pattern, std::string* error);

// Whether the well-formed |pattern| is found in |text|, as the library searches.
bool PatternMatches(const std::string& pattern, const std::string& text);
