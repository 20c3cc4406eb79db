// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <regex>

#include "WpaStringUtils.h"

void WpaStringUtils::GetKeyValues(const std::string& text,
                                  std::map<std::string, std::string>& keyValues) {
    std::vector<std::string> fields;
    SplitString(text, ' ', fields);

    for (auto& [key, value] : keyValues) {
        const std::regex matcher(key);
        for (size_t i = 0; i < fields.size(); ++i) {
            if (!std::regex_search(fields[i], matcher)) {
                continue;
            }
            // A key found in the last field has no value to take; it keeps the caller's.
            if (i + 1 < fields.size()) {
                value = fields[i + 1];
                Strip(value, "<>");
            }
            break;
        }
    }
}
