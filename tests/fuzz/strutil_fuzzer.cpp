// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The string helpers on any bytes: every Strip form, SplitString with any delimiter and an
// output that already holds fields, and GetKeyValues with keys made of escaped input bytes (a
// malformed key ends the process by design, so keys are always well-formed patterns).

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <map>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "WpaStringUtils.h"

namespace {

// A pattern that matches |bytes| literally.
std::string Literal(const std::string& bytes) {
    std::string pattern;
    for (unsigned char c : bytes) {
        char escaped[5];
        snprintf(escaped, sizeof(escaped), "\\x%02x", c);
        pattern += escaped;
    }
    return pattern;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const char ch = input.ConsumeIntegral<char>();
    const char delimiter = input.ConsumeIntegral<char>();
    const std::string set = input.ConsumeRandomLengthString(8);
    std::map<std::string, std::string> keys;
    for (int n = input.ConsumeIntegralInRange(0, 4); n > 0; --n) {
        const std::string key = input.ConsumeRandomLengthString(6);
        keys[input.ConsumeBool() ? Literal(key) : "^" + Literal(key) + "$"] = "default";
    }
    const std::string text = input.ConsumeRemainingBytesAsString();

    std::string out;
    WpaStringUtils::Strip(text, ch, out);
    std::string copy = text;
    WpaStringUtils::Strip(copy, ch);
    if (copy != out) __builtin_trap();
    WpaStringUtils::Strip(text, set, out);
    copy = text;
    WpaStringUtils::Strip(copy, set);
    if (copy != out) __builtin_trap();
    std::string aliased = set;
    WpaStringUtils::Strip(aliased, aliased);

    std::vector<std::string> fields = {"kept"};
    WpaStringUtils::SplitString(text, delimiter, fields);
    if (fields.size() < 2 || fields[0] != "kept") __builtin_trap();
    for (size_t i = 1; i < fields.size(); ++i) {
        if (fields[i].find(delimiter) != std::string::npos) __builtin_trap();
    }
    const size_t count = keys.size();
    WpaStringUtils::GetKeyValues(text, keys);
    if (keys.size() != count) __builtin_trap();
    return 0;
}
