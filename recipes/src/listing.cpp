// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Scans, and the listing of the BSS table held.

#include <ctype.h>
#include <stdlib.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "WpaStringUtils.h"
#include "hex.h"
#include "waits.h"

namespace tesmir::recipes {
namespace {

// With nothing held, SCAN_RESULTS is its header line alone, whose line feed the cut drops.
bool HoldsBss(WpacliWrapper& client) {
    std::string reply;
    return Command(client, "SCAN_RESULTS", &reply) && reply.find('\n') != std::string::npos;
}

// The SSID from the first information element in hex ("ie=0006746573..."), element 0 when the
// supplicant has one: its bytes as they are, spaces and all, and its length even when the
// 63-byte reply cuts it. False when the first element is not an SSID.
bool SsidFromElements(const std::string& hex, Bss* bss) {
    if (hex.size() < 4 || hex.compare(0, 2, "00") != 0) return false;
    bss->ssidLength = static_cast<size_t>(strtol(hex.substr(2, 2).c_str(), nullptr, 16));
    bss->ssid = Bytes(hex.substr(4, 2 * bss->ssidLength));
    bss->ssidWhole = bss->ssid.size() == bss->ssidLength;
    return true;
}

// The ids held up to |last|, in order, several to a reply: with MASK=0x1 an entry is "id=N\n",
// about ten to the 63 bytes of a reply, whose last line a full reply may have cut.
bool HeldIds(WpacliWrapper& client, int last, std::vector<int>* ids) {
    std::string reply;
    for (int next = 0; next <= last;) {
        if (!QueryBss(client, "RANGE=" + std::to_string(next) + "-", "0x1", &reply)) return false;
        std::vector<std::string> lines;
        WpaStringUtils::SplitString(reply, '\n', lines);
        if (reply.size() == 63 && lines.size() > 1) lines.pop_back();
        const int before = next;
        for (const std::string& line : lines) {
            const int id = Number(Field(line, "id"));
            if (id < next || id > last) continue;
            ids->push_back(id);
            next = id + 1;
        }
        if (next == before) break;  // nothing at or past |next| up to the bound
    }
    return true;
}

// The fields of the entry |bss->id|, by "RANGE=<id>-": id, bssid, freq, level (at most 55
// bytes), then flags and the SSID element, which may be long, each with the id alone. False when
// a call failed; true with |bss->id| another id when a reply answered for another entry: the
// one asked for went meanwhile.
bool ReadBss(WpacliWrapper& client, Bss* bss, std::string* reply) {
    const int id = bss->id;
    const std::string range = "RANGE=" + std::to_string(id) + "-";
    bool held = true;
    const auto ask = [&](const char* mask) {
        if (!QueryBss(client, range, mask, reply)) return false;
        bss->id = Number(Field(*reply, "id"));
        held = bss->id == id;
        return true;
    };
    if (!ask("0x87")) return false;
    if (!held) return true;
    bss->bssid = Field(*reply, "bssid");
    bss->freq = Number(Field(*reply, "freq"));
    bss->level = Number(Field(*reply, "level"));
    if (!ask("0x801")) return false;
    if (!held) return true;
    bss->flags = Field(*reply, "flags");
    if (!ask("0x401")) return false;
    if (!held || SsidFromElements(Field(*reply, "ie"), bss)) return true;
    // No SSID element first (never seen here): the supplicant's own text of it, whose spaces the
    // library removed.
    if (!ask("0x1001")) return false;
    if (!held) return true;
    bss->ssid = DecodeSsid(Field(*reply, "ssid"));
    bss->ssidLength = bss->ssid.size();
    bss->ssidWhole = false;
    return true;
}

}  // namespace

bool QueryBss(WpacliWrapper& client, const std::string& which, const char* mask,
              std::string* reply) {
    return Command(client, "BSS " + which + " MASK=" + mask, reply);
}

bool Scan(WpacliWrapper& client, const std::string& freqs) {
    CompileEventPatterns();
    // FAIL-BUSY while another client's scan runs (on a device, the framework's): its results
    // come first, then ours may start.
    std::string reply;
    for (int tries = 0; !Command(client, freqs.empty() ? "SCAN" : "SCAN freq=" + freqs, &reply);
         ++tries) {
        if (reply != "FAIL-BUSY" || tries == 5 ||
            !AwaitEvent(
                    client, EventPattern("CTRL-EVENT-SCAN-(RESULTS|FAILED) "), [] { return true; },
                    nullptr, 10)) {
            return false;
        }
    }
    // A BSS-ADDED event comes only while results are taken in, right before SCAN-RESULTS. An
    // idle station on a device build scans in state 3 and leaves it once the results are in.
    bool scanning = false;
    Wait wait;
    wait.pattern = EventPattern("CTRL-EVENT-(SCAN-RESULTS|SCAN-FAILED|BSS-ADDED) ");
    wait.askState = true;
    wait.happened = [&client] { return HoldsBss(client); };
    wait.judge = [&scanning,
                  results = std::regex(EventPattern("CTRL-EVENT-(SCAN-RESULTS|BSS-ADDED) ")),
                  failed = std::regex(EventPattern("CTRL-EVENT-SCAN-FAILED "))](
                         const std::string& event) {
        if (std::regex_search(event, results)) return Verdict::kDone;
        if (std::regex_search(event, failed)) return Verdict::kFailed;
        State state;
        if (ParseState(event, &state)) {
            if (state.state == 3) scanning = true;
            if (scanning && state.state != 3) return Verdict::kDone;
        }
        return Verdict::kNotYet;
    };
    return Await(client, "PING", wait);
}

bool ListNetworks(WpacliWrapper& client, std::vector<Bss>* found) {
    found->clear();
    // Every BSS query of an entry the supplicant does not hold answers 0 bytes, which ends the
    // process; "RANGE=N-" answers for the first entry whose id is N or more, and is empty only
    // when none is left. Under churn the entries that go are mostly the newest (a radio out of
    // reach, found again under new ids), so the listing learns the ids up to the last one held,
    // ten to a reply, and then reads from the newest down: it is exposed only while it reads the
    // entries that go. An entry gone before its turn yields a newer one, already read or past
    // the bound, and is skipped; one that came back under a new id is past the bound.
    // A failed call is no empty table: a helper whose supplicant went away must say so.
    std::string reply;
    if (!Command(client, "SCAN_RESULTS", &reply)) return false;
    if (reply.find('\n') == std::string::npos) return true;
    if (!QueryBss(client, "LAST", "0x1", &reply)) return false;
    const int last = Number(Field(reply, "id"));
    std::vector<int> ids;
    if (!HeldIds(client, last, &ids)) return false;
    for (auto id = ids.rbegin(); id != ids.rend(); ++id) {
        Bss bss;
        bss.id = *id;
        if (!ReadBss(client, &bss, &reply)) return false;
        if (bss.id == *id) found->push_back(bss);
    }
    std::reverse(found->begin(), found->end());
    return true;
}

std::string DecodeSsid(const std::string& printed) {
    std::string bytes;
    for (size_t i = 0; i < printed.size(); ++i) {
        if (printed[i] != '\\' || i + 1 == printed.size()) {
            bytes += printed[i];
            continue;
        }
        const char c = printed[++i];
        switch (c) {
            case 'n':
                bytes += '\n';
                break;
            case 'r':
                bytes += '\r';
                break;
            case 't':
                bytes += '\t';
                break;
            case 'e':
                bytes += '\033';
                break;
            case 'x':
                if (i + 2 < printed.size() &&
                    isxdigit(static_cast<unsigned char>(printed[i + 1])) &&
                    isxdigit(static_cast<unsigned char>(printed[i + 2]))) {
                    bytes += static_cast<char>(
                            strtol(printed.substr(i + 1, 2).c_str(), nullptr, 16));
                    i += 2;
                } else {
                    bytes += "\\x";  // cut inside the escape
                }
                break;
            default:
                bytes += c;  // \" and \\ stand for themselves
        }
    }
    return bytes;
}

bool SsidCanBe(const Bss& bss, const std::string& ssid) {
    if (bss.ssidWhole) return bss.ssid == ssid;
    return ssid.size() == bss.ssidLength && ssid.compare(0, bss.ssid.size(), bss.ssid) == 0;
}

}  // namespace tesmir::recipes
