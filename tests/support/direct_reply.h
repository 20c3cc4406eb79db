#pragma once

// What Execute's direct mode makes of a supplicant reply, for checking it against raw replies.

#include <stddef.h>

#include <algorithm>
#include <string>

// At most 64 bytes are received, the last of them is dropped, the text ends at its first NUL, and
// every space is removed. |reply| must not be empty.
inline std::string DirectModeResponse(const std::string& reply) {
    std::string text = reply.substr(0, std::min<size_t>(reply.size(), 64) - 1);
    text.resize(std::min(text.size(), text.find('\0')));
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}
