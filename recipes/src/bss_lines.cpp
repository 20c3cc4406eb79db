// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "bss_lines.h"

#include <errno.h>
#include <stdlib.h>
#include <sys/socket.h>

#include "WpaStringUtils.h"
#include "hex.h"

namespace tesmir::recipes {
namespace {

// "-" stands for an empty field: the fields are split at spaces.
std::string Field(const std::string& text) {
    return text.empty() ? "-" : text;
}

std::string Unfield(const std::string& field) {
    return field == "-" ? "" : field;
}

}  // namespace

std::string BssLine(const Bss& bss) {
    return "bss " + std::to_string(bss.id) + " " + Field(bss.bssid) + " " +
           std::to_string(bss.freq) + " " + std::to_string(bss.level) + " " + Field(bss.flags) +
           " " + Field(Hex(bss.ssid)) + " " + std::to_string(bss.ssidLength) + " " +
           (bss.ssidWhole ? "1" : "0") + "\n";
}

bool ParseBssLines(const std::string& output, std::vector<Bss>* found) {
    std::vector<std::string> lines;
    WpaStringUtils::SplitString(output, '\n', lines);
    found->clear();
    for (const std::string& line : lines) {
        std::vector<std::string> f;
        WpaStringUtils::SplitString(line, ' ', f);
        if (f.size() == 2 && f[0] == "done") {
            return strtoul(f[1].c_str(), nullptr, 10) == found->size();
        }
        if (f.size() != 9 || f[0] != "bss") return false;
        Bss bss;
        bss.id = atoi(f[1].c_str());
        bss.bssid = Unfield(f[2]);
        bss.freq = atoi(f[3].c_str());
        bss.level = atoi(f[4].c_str());
        bss.flags = Unfield(f[5]);
        bss.ssid = Bytes(Unfield(f[6]));
        bss.ssidLength = strtoul(f[7].c_str(), nullptr, 10);
        bss.ssidWhole = f[8] == "1";
        found->push_back(bss);
    }
    return false;
}

bool SendAll(int fd, const std::string& text) {
    for (size_t sent = 0; sent < text.size();) {
        const ssize_t n = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        sent += static_cast<size_t>(n);
    }
    return true;
}

bool AnswerIsWhole(const std::string& output) {
    if (output == kUnsupported) return true;
    if (output.empty() || output.back() != '\n') return false;
    const size_t start = output.rfind('\n', output.size() - 2);
    return output.compare(start == std::string::npos ? 0 : start + 1, 5, "done ") == 0;
}

}  // namespace tesmir::recipes
