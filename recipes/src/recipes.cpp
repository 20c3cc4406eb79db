// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "TesmirRecipes.h"

#include <ctype.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <regex>
#include <thread>

#include "WpaStringUtils.h"
#include "hex.h"

namespace tesmir::recipes {
namespace {

// Every waiting-mode call gives up after 3 s without an event, with this status.
constexpr int32_t kNoEvent = -22;

// The events that carry the station's state, each up to its first field; EventPattern()
// anchors them. What follows the CONNECTED prefix in one cut before its BSSID is whole: the
// rest of "Connection to " and part of the BSSID.
constexpr const char* kStateChangeEvent = "CTRL-EVENT-STATE-CHANGE id=";
constexpr const char* kConnectedEvent = "CTRL-EVENT-CONNECTED - ";
constexpr const char* kDisconnectedEvent = "CTRL-EVENT-DISCONNECTED bssid=";
constexpr const char* kCutBeforeMac = "[ A-Za-z]{0,14}[0-9a-f:]{0,16}$";

// From associating (5) to the group handshake (8): a connection can complete at any moment.
constexpr int kAssociating = 5;
bool Settling(int state) {
    return state >= kAssociating && state < kCompleted;
}
// How a wait asks a settling station's state: a few milliseconds apart, which the last steps of
// a connection take between them, and at most this often in one wait, which a wrong passphrase
// (the station in the handshake for seconds) reaches; then it waits on PING.
constexpr std::chrono::milliseconds kSpacing(2);
constexpr int kSpacedQueries = 9;

// The value of KEY in a reply of KEY=VALUE lines ("" when absent).
std::string Field(const std::string& reply, const std::string& key) {
    std::vector<std::string> lines;
    WpaStringUtils::SplitString(reply, '\n', lines);
    for (const std::string& line : lines) {
        if (line.compare(0, key.size() + 1, key + "=") == 0) return line.substr(key.size() + 1);
    }
    return "";
}

int Number(const std::string& text) {
    return static_cast<int>(strtol(text.c_str(), nullptr, 10));
}

bool Matches(const std::string& event, const std::string& name) {
    return std::regex_search(event, std::regex(EventPattern(name)));
}

// One BSS query, narrowed by MASK= to fields that fit the 63 bytes a reply may have. The BSS must
// be held: the reply for one that is not is empty, and an empty reply ends the process.
bool QueryBss(WpacliWrapper& client, const std::string& which, const char* mask,
              std::string* reply) {
    return Command(client, "BSS " + which + " MASK=" + mask, reply);
}

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

// For a wait on a connection whose event may be lost, on a build that sends no state: whether
// the station has stayed associated through two periods of 3 s without events. One is not
// enough: with a wrong passphrase the station stays associated, without events, while the AP
// repeats the handshake's first message (hostapd sends it four times, a second apart after the
// first) before it gives up.
std::function<bool()> HeldAssociation(WpacliWrapper& client) {
    return [&client, held = 0]() mutable {
        held = CurrentBssid(client, nullptr) ? held + 1 : 0;
        return held >= 2;
    };
}

// The events that tell a connection completed: the supplicant's own, the one a device build's
// STATUS sends ("connection", "(auth)"), and that build's state change: to |bssid| (any when
// empty), on the network whose id matches the pattern |id|. A CONNECTED behind a shorter event of
// the same call comes cut, often before its BSSID ("<3>CTRL-EVENT-CONNECTED - Connection" behind
// "<3>Associated with 02:00:00:00:01:00"): its name, at the start, still tells what happened.
std::string CompletedPattern(const std::string& bssid, const std::string& id) {
    const std::string mac = bssid.empty() ? "[0-9a-f:]{17}" : bssid;
    return EventPattern("(" + std::string(kConnectedEvent) + "([Cc]onnection to " + mac + "|" +
                        kCutBeforeMac + ")|" + kStateChangeEvent + id + " state=9 BSSID=" + mac +
                        ")");
}

// Waits for the station to complete a connection, to |bssid| when given; on |failure| (a
// pattern of EventPattern's) it gives up. Puts the BSSID in |connected|.
bool AwaitCompleted(WpacliWrapper& client, const std::string& bssid, int id,
                    const std::string& failure, std::function<bool()> happened,
                    std::string* connected) {
    const std::string ids = id < 0 ? "-?[0-9]+" : std::to_string(id);
    Wait wait;
    wait.pattern = CompletedPattern(bssid, ids);
    if (!failure.empty()) wait.pattern += "|" + EventPattern(failure);
    wait.askState = true;
    wait.happened = std::move(happened);
    std::string found;
    wait.judge = [&](const std::string& event) {
        State state;
        // A BSSID the event no longer holds is checked below, with STATUS.
        if (ParseState(event, &state) && state.state == kCompleted &&
            (id < 0 || state.id == id || state.id == kIdCut) &&
            (bssid.empty() || state.bssid == bssid || state.bssid.empty())) {
            found = state.bssid;
            return Verdict::kDone;
        }
        return !failure.empty() && Matches(event, failure) ? Verdict::kFailed : Verdict::kNotYet;
    };
    // The state first: a connection to a known access point can complete between the command's
    // call and the wait's first.
    if (!Await(client, "STATUS", wait)) return false;
    if (!found.empty()) {
        if (connected != nullptr) *connected = found;
        return true;
    }
    // Decided by an event cut before its BSSID, or by happened(): the BSSID comes from STATUS.
    std::string now;
    if (!CurrentBssid(client, &now) || (!bssid.empty() && now != bssid)) return false;
    if (connected != nullptr) *connected = now;
    return true;
}

// Sends |command| in waiting mode and waits up to |seconds| for the station to be disconnected:
// its DISCONNECTED event, whose reason code goes to |reason| when the event holds it (else 0),
// or a state below authenticating.
bool AwaitDisconnected(WpacliWrapper& client, const std::string& command, int seconds,
                       int* reason) {
    // "<3>CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:01:00 reason=3 locally_generated=1"
    static const std::regex kReason(
            EventPattern(std::string(kDisconnectedEvent) + "[0-9a-f:]{17} reason=([0-9]+)"));
    *reason = 0;
    Wait wait;
    wait.pattern = EventPattern(kDisconnectedEvent);
    wait.askState = true;
    wait.seconds = seconds;
    wait.happened = [&client] { return !CurrentBssid(client, nullptr); };
    wait.judge = [reason](const std::string& event) {
        std::smatch match;
        if (std::regex_search(event, match, kReason)) *reason = Number(match[2]);
        State state;
        return Matches(event, kDisconnectedEvent) ||
                               (ParseState(event, &state) && state.state < kAuthenticating)
                       ? Verdict::kDone
                       : Verdict::kNotYet;
    };
    return Await(client, command, wait);
}

}  // namespace

bool Command(WpacliWrapper& client, const std::string& command, std::string* reply) {
    std::string response;
    if (client.Execute(command, "", response, false) != 0) return false;
    if (reply != nullptr) *reply = response;
    // FAIL and FAIL-BUSY, FAIL-CHECKSUM, ...; "UNKNOWN COMMAND" has lost its space.
    return response.rfind("FAIL", 0) != 0 && response != "UNKNOWNCOMMAND";
}

std::string EventPattern(const std::string& name) {
    return "^(IFNAME=\\S+ )?<[0-9]>" + name;
}

bool ParseState(const std::string& event, State* state) {
    // Every field is read before the SSID or id_str, the only text in these events that is not
    // the supplicant's own. An event after the first of a call is cut to the length of the one
    // before it: the BSSID ends at byte 64 of a STATE-CHANGE and 57 of a CONNECTED, so that it
    // survives behind any event of that length; a CONNECTED cut shorter still tells, by its name at
    // the start, that a connection completed.
    static const std::regex kStateChange(EventPattern(
            std::string(kStateChangeEvent) + "(-?[0-9]+) state=([0-9]+) BSSID=([0-9a-f:]{17})"));
    static const std::regex kConnected(EventPattern(std::string(kConnectedEvent) +
                                                    "([Cc]onnection to ([0-9a-f:]{17})|" +
                                                    kCutBeforeMac + ")"));
    static const std::regex kConnectedId(R"(^ completed (\(auth\) )?\[id=(-?[0-9]+) )");
    std::smatch match;
    if (std::regex_search(event, match, kStateChange)) {
        state->id = Number(match[2]);
        state->state = Number(match[3]);
        state->bssid = match[4];
        return true;
    }
    if (std::regex_search(event, match, kConnected)) {
        state->state = kCompleted;
        state->bssid = match[3];
        // The id when the event is long enough to hold it.
        const std::string rest = match.suffix();
        std::smatch id;
        state->id = std::regex_search(rest, id, kConnectedId) ? Number(id[2]) : kIdCut;
        return true;
    }
    return false;
}

bool QueryState(WpacliWrapper& client, State* state) {
    // The first event of a call arrives whole; behind a shorter one it is cut, and asked again.
    std::string event;
    for (int tries = 0; tries < 3; ++tries) {
        if (client.Execute("STATUS", EventPattern(kStateChangeEvent), event, true) != 0) {
            return false;
        }
        if (ParseState(event, state)) return true;
    }
    return false;
}

bool Await(WpacliWrapper& client, const std::string& command, const Wait& wait,
           std::string* event) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(wait.seconds);
    // Whether this supplicant sends its state as events: a build as devices build it.
    bool sendsState = false;
    int asked = 0;   // state queries in a row that did not hand back a state
    int spaced = 0;  // state queries that no event prompted
    int last = -1;   // the state last read
    std::string next = command;
    std::string response;
    for (;;) {
        // Each call hands back the first event that matches, or the last one it examined.
        const int32_t status = client.Execute(next, wait.pattern, response, true);
        if (status != 0 && status != kNoEvent) return false;
        if (status == 0) {
            const Verdict verdict = wait.judge(response);
            if (verdict != Verdict::kNotYet) {
                if (event != nullptr) *event = response;
                return verdict == Verdict::kDone;
            }
            static const std::regex kSentState(EventPattern(kStateChangeEvent));
            sendsState = sendsState || std::regex_search(response, kSentState);
            State state;
            const bool read = ParseState(response, &state);
            if (read) last = state.state;
            asked = next == "STATUS" && !read ? asked + 1 : 0;
        } else if (!(sendsState && wait.askState) && wait.happened && wait.happened()) {
            if (event != nullptr) event->clear();
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) return false;
        const bool queried = next == "STATUS";
        next = "PING";
        if (!wait.askState) continue;
        if (!queried || (asked > 0 && asked < 3)) {
            // What this call did not see may have come between it and the next: ask the state
            // before waiting for another event. A device build answers at once; a desktop build
            // waits as PING does. Behind other events of the same call the state comes cut, or
            // not last: ask again.
            next = "STATUS";
        } else if (sendsState && Settling(last) && spaced < kSpacedQueries) {
            // From association on, the flow's last events come within milliseconds of each other
            // with nothing after them: should they fall between this call and a PING, that PING
            // would wait 3 s. Ask the state again a little later instead.
            std::this_thread::sleep_for(kSpacing);
            ++spaced;
            next = "STATUS";
        }
    }
}

bool AwaitEvent(WpacliWrapper& client, const std::string& pattern,
                const std::function<bool()>& happened, std::string* event, int seconds) {
    Wait wait;
    wait.pattern = pattern;
    wait.happened = happened;
    wait.seconds = seconds;
    wait.judge = [matcher = std::regex(pattern)](const std::string& response) {
        return std::regex_search(response, matcher) ? Verdict::kDone : Verdict::kNotYet;
    };
    return Await(client, "PING", wait, event);
}

bool Scan(WpacliWrapper& client, const std::string& freqs) {
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
    wait.judge = [&scanning](const std::string& event) {
        if (Matches(event, "CTRL-EVENT-(SCAN-RESULTS|BSS-ADDED) ")) return Verdict::kDone;
        if (Matches(event, "CTRL-EVENT-SCAN-FAILED ")) return Verdict::kFailed;
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

bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::string& freqs, std::string* bssid) {
    std::string id;
    if (!Command(client, "ADD_NETWORK", &id)) return false;
    // In hex: an SSID may hold quotes, spaces and any other byte.
    std::vector<std::string> settings = {"ssid " + Hex(ssid)};
    switch (security) {
        case Security::kOpen:
            settings.emplace_back("key_mgmt NONE");
            break;
        case Security::kWpa2Psk:
            settings.emplace_back("key_mgmt WPA-PSK");
            settings.push_back("psk \"" + passphrase + "\"");
            break;
        case Security::kWpa3Sae:
            settings.emplace_back("key_mgmt SAE");
            settings.emplace_back("ieee80211w 2");
            settings.push_back("sae_password \"" + passphrase + "\"");
            break;
    }
    // A full scan of every channel takes seconds; the network's own channels take a fraction.
    if (!freqs.empty()) settings.push_back("scan_freq " + freqs);
    const std::string set = "SET_NETWORK " + id + " ";
    for (const std::string& setting : settings) {
        if (!Command(client, set + setting)) return false;
    }
    if (!Command(client, "SELECT_NETWORK " + id)) return false;
    // A wrong passphrase ends in SSID-TEMP-DISABLED, after which the supplicant retries later.
    return AwaitCompleted(client, "", Number(id), "CTRL-EVENT-SSID-TEMP-DISABLED id=" + id + " ",
                          HeldAssociation(client), bssid);
}

bool CurrentBssid(WpacliWrapper& client, std::string* bssid) {
    // Associated, STATUS begins with "bssid=xx:xx:xx:xx:xx:xx\n"; otherwise with wpa_state=.
    // Its wpa_state line comes too late to fit once associated.
    std::string status;
    if (!Command(client, "STATUS", &status) || status.rfind("bssid=", 0) != 0) return false;
    if (bssid != nullptr) *bssid = Field(status, "bssid");
    return true;
}

bool ReadSignal(WpacliWrapper& client, Signal* signal) {
    // "RSSI=-30\nLINKSPEED=54\nNOISE=9999\nFREQUENCY=2412\n...": the first four fit.
    std::string reply;
    if (!Command(client, "SIGNAL_POLL", &reply)) return false;
    signal->rssi = Number(Field(reply, "RSSI"));
    signal->linkSpeed = Number(Field(reply, "LINKSPEED"));
    signal->freq = Number(Field(reply, "FREQUENCY"));
    return signal->freq != 0;
}

bool Disconnect(WpacliWrapper& client) {
    // DISCONNECTED is the first event to come; with nothing to disconnect from, none comes.
    int reason = 0;
    return AwaitDisconnected(client, "DISCONNECT", 10, &reason);
}

bool Reconnect(WpacliWrapper& client, std::string* bssid) {
    return Command(client, "RECONNECT") &&
           AwaitCompleted(client, "", -1, "", HeldAssociation(client), bssid);
}

bool Roam(WpacliWrapper& client, const std::string& bssid) {
    const auto there = [&client, &bssid] {
        std::string now;
        return CurrentBssid(client, &now) && now == bssid;
    };
    return Command(client, "ROAM " + bssid) &&
           AwaitCompleted(client, bssid, -1, "", there, nullptr);
}

bool WaitForLinkLoss(WpacliWrapper& client, int seconds, int* reason) {
    // The state first: a link already down ends the wait at once.
    return AwaitDisconnected(client, "STATUS", seconds, reason);
}

bool Forget(WpacliWrapper& client) {
    return Command(client, "REMOVE_NETWORK all");
}

bool Reopen(WpacliWrapper& client, const std::string& socket, int seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::string reply;
    // Until the supplicant has made its socket, Open fails (and logs an error at the default
    // mask); a socket left by a supplicant that ended opens but does not answer.
    while (client.Open(socket) != 0 || !Command(client, "PING", &reply) || reply != "PONG") {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return true;
}

}  // namespace tesmir::recipes
