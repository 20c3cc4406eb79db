// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "waits.h"

#include <ctype.h>
#include <stdlib.h>

#include <chrono>
#include <regex>
#include <thread>
#include <vector>

#include "WpaStringUtils.h"

namespace tesmir::recipes {
namespace {

// The events that carry the station's state, each up to its first field; EventPattern()
// anchors them. What follows the CONNECTED prefix in one cut before its BSSID is whole: the
// rest of "Connection to " and part of the BSSID.
constexpr const char* kStateChangeEvent = "CTRL-EVENT-STATE-CHANGE id=";
constexpr const char* kConnectedEvent = "CTRL-EVENT-CONNECTED - ";
constexpr const char* kDisconnectedEvent = "CTRL-EVENT-DISCONNECTED bssid=";
constexpr const char* kCutBeforeMac = "[ A-Za-z]{0,14}[0-9a-f:]{0,16}$";

// How a wait asks a settling station's state: a few milliseconds apart, which the last steps of
// a connection take between them, and at most this often in one wait, which a wrong passphrase
// (the station in the handshake for seconds) reaches; then it waits on PING.
constexpr std::chrono::milliseconds kSpacing(2);
constexpr int kSpacedQueries = 9;

// The events that tell a connection completed: the supplicant's own, the one a device build's
// STATUS sends ("connection", "(auth)"), that build's state change, and the keys set: to |bssid|
// (any when empty), on the network whose id matches the pattern |id|. A CONNECTED or keys behind a
// shorter event of the same call come cut, often before the BSSID ("<3>CTRL-EVENT-CONNECTED -
// Connection" behind "<3>Associated with 02:00:00:00:01:00"): the name, at the start, still tells
// what happened. The keys come first, and on a desktop build they may be the last event a call
// sees of a connection.
std::string CompletedPattern(const std::string& bssid, const std::string& id) {
    const std::string mac = bssid.empty() ? "[0-9a-f:]{17}" : bssid;
    const std::string macOrCut = "( with " + mac + "|" + kCutBeforeMac + ")";
    return EventPattern("(" + std::string(kConnectedEvent) + "([Cc]onnection to " + mac + "|" +
                        kCutBeforeMac + ")|" + kStateChangeEvent + id + " state=9 BSSID=" + mac +
                        "|" + kKeysSetEvent + macOrCut + ")");
}

// The patterns the waits read events with.
struct Readers {
    // "id=N state=S BSSID=X": every field before the SSID, the only text in the event that is
    // not the supplicant's own. An event after the first of a call is cut to the length of the
    // one before it: the BSSID ends at byte 64 of a STATE-CHANGE and 57 of a CONNECTED, so that
    // it survives behind any event of that length; a CONNECTED cut shorter still tells, by its
    // name at the start, that a connection completed.
    std::regex stateChange{EventPattern(std::string(kStateChangeEvent) +
                                        "(-?[0-9]+) state=([0-9]+) BSSID=([0-9a-f:]{17})")};
    std::regex connected{EventPattern(std::string(kConnectedEvent) + "([Cc]onnection to " +
                                      "([0-9a-f:]{17})|" + kCutBeforeMac + ")")};
    std::regex connectedId{R"(^ completed (\(auth\) )?\[id=(-?[0-9]+) )"};
    std::regex sentState{EventPattern(kStateChangeEvent)};
    // Cut before its BSSID, a state change still tells how far the flow got.
    std::regex cutState{
            EventPattern(std::string(kStateChangeEvent) + "-?[0-9]+ state=([0-9])( |$)")};
    std::regex keysSet{EventPattern(kKeysSetEvent + std::string("( with ([0-9a-f:]{17}))?"))};
    std::regex disconnected{EventPattern(kDisconnectedEvent)};
    // "<3>CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:01:00 reason=3 locally_generated=1"
    std::regex disconnectReason{
            EventPattern(std::string(kDisconnectedEvent) + "[0-9a-f:]{17} reason=([0-9]+)")};
};

// Compiled all at once, before a flow's first call. Compiled where first used, between two
// calls, they widened the gap in which the supplicant's events are lost: in a process just
// started, a connect's first gap took 3 ms at the median (1 ms compiled before), in the radio
// lab.
const Readers& Read() {
    static const Readers* const readers = new Readers;
    return *readers;
}

}  // namespace

void CompileEventPatterns() {
    Read();
}

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

std::string Lower(const std::string& text) {
    std::string lower;
    for (char c : text) lower += static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return lower;
}

std::function<bool()> HeldAssociation(WpacliWrapper& client) {
    // One period is not enough: with a wrong passphrase the station stays associated, without
    // events, while the AP repeats the handshake's first message (hostapd sends it four times, a
    // second apart after the first) before it gives up.
    return [&client, held = 0]() mutable {
        held = CurrentBssid(client, nullptr) ? held + 1 : 0;
        return held >= 2;
    };
}

bool AwaitCompleted(WpacliWrapper& client, const Completion& completion, std::string* connected) {
    const std::string& bssid = completion.bssid;
    const int id = completion.id;
    const std::string ids = id < 0 ? "-?[0-9]+" : std::to_string(id);
    Wait wait;
    wait.pattern = CompletedPattern(bssid, ids);
    if (!completion.failure.empty()) wait.pattern += "|" + EventPattern(completion.failure);
    wait.askState = true;
    wait.happened = completion.happened;
    wait.seconds = completion.seconds;
    std::string found;
    const Readers& readers = Read();
    const std::regex failure(EventPattern(completion.failure));
    wait.judge = [&](const std::string& event) {
        std::smatch keys;
        if (std::regex_search(event, keys, readers.keysSet)) {
            if (!bssid.empty() && keys[3].matched && keys[3] != bssid) return Verdict::kNotYet;
            found = keys[3];
            return Verdict::kDone;
        }
        State state;
        const bool read = ParseState(event, &state);
        // A BSSID the event no longer holds is checked below, with STATUS.
        if (read && state.state == kCompleted && (id < 0 || state.id == id || state.id == kIdCut) &&
            (bssid.empty() || state.bssid == bssid || state.bssid.empty())) {
            found = state.bssid;
            return Verdict::kDone;
        }
        if (read && completion.onState) return completion.onState(state);
        if (completion.failure.empty() || !std::regex_search(event, failure)) {
            return Verdict::kNotYet;
        }
        return completion.onFailure ? completion.onFailure(event) : Verdict::kFailed;
    };
    // The state first: a connection to a known access point can complete between the command's
    // call and the wait's first.
    if (!AwaitSettling(client, "STATUS", wait, completion, nullptr)) return false;
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

bool AwaitDisconnected(WpacliWrapper& client, const std::string& command, int seconds,
                       int* reason) {
    *reason = 0;
    Wait wait;
    wait.pattern = EventPattern(kDisconnectedEvent);
    wait.askState = true;
    wait.seconds = seconds;
    wait.happened = [&client] { return !CurrentBssid(client, nullptr); };
    wait.judge = [reason, &readers = Read()](const std::string& event) {
        std::smatch match;
        if (std::regex_search(event, match, readers.disconnectReason)) *reason = Number(match[2]);
        State state;
        return std::regex_search(event, readers.disconnected) ||
                               (ParseState(event, &state) && state.state < kAuthenticating)
                       ? Verdict::kDone
                       : Verdict::kNotYet;
    };
    return Await(client, command, wait);
}

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
    const Readers& readers = Read();
    std::smatch match;
    if (std::regex_search(event, match, readers.stateChange)) {
        state->id = Number(match[2]);
        state->state = Number(match[3]);
        state->bssid = match[4];
        return true;
    }
    if (std::regex_search(event, match, readers.connected)) {
        state->state = kCompleted;
        state->bssid = match[3];
        // The id when the event is long enough to hold it.
        const std::string rest = match.suffix();
        std::smatch id;
        state->id = std::regex_search(rest, id, readers.connectedId) ? Number(id[2]) : kIdCut;
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
    return AwaitSettling(client, command, wait, Completion(), event);
}

bool AwaitSettling(WpacliWrapper& client, const std::string& command, const Wait& wait,
                   const Completion& settling, std::string* event) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(wait.seconds);
    // Whether this supplicant sends its state as events: a build as devices build it.
    bool sendsState = false;
    int asked = 0;              // state queries in a row that did not hand back a state
    int spaced = 0;             // state queries that no event prompted
    int last = -1;              // the state last read
    bool sawSettledBy = false;  // an event of settling.settledBy came
    const Readers& readers = Read();
    const std::regex settledByMatch(EventPattern(settling.settledBy));
    const auto settled = [&] { return sawSettledBy || last >= settling.settlingFrom; };
    std::string next = command;
    std::string response;
    const auto tell = [&settling, &sendsState](bool done) {
        if (settling.sentState != nullptr) *settling.sentState = sendsState;
        return done;
    };
    for (;;) {
        // Each call hands back the first event that matches, or the last one it examined.
        // Only a build that sends its state answers a prompt with an event.
        if (settling.prompter != nullptr) settling.prompter->Calling(next == "PING" && sendsState);
        const int32_t status = client.Execute(next, wait.pattern, response, true);
        if (settling.prompter != nullptr) settling.prompter->Returned();
        bool quiet = false;  // the next call waits for an event, whatever the state
        if (status != 0 && status != kNoEvent) return tell(false);
        if (status == 0) {
            sendsState = sendsState || std::regex_search(response, readers.sentState);
            const Verdict verdict = wait.judge(response);
            if (verdict != Verdict::kNotYet) {
                if (event != nullptr) *event = response;
                return tell(verdict == Verdict::kDone);
            }
            State state;
            const bool read = ParseState(response, &state);
            std::smatch cut;
            if (read) {
                last = state.state;
            } else if (std::regex_search(response, cut, readers.cutState)) {
                last = Number(cut[2]);
            }
            sawSettledBy = sawSettledBy || (!settling.settledBy.empty() &&
                                            std::regex_search(response, settledByMatch));
            asked = next == "STATUS" && !read ? asked + 1 : 0;
            quiet = !settling.stateAfterEvents && !settled();
        } else if (!(sendsState && wait.askState) && wait.happened && wait.happened()) {
            if (event != nullptr) event->clear();
            return tell(true);
        }
        if (std::chrono::steady_clock::now() >= deadline) return tell(false);
        const bool queried = next == "STATUS";
        next = "PING";
        if (!wait.askState || quiet) continue;
        if (!queried || (asked > 0 && asked < 3)) {
            // What this call did not see may have come between it and the next: ask the state
            // before waiting for another event. A device build answers at once; a desktop build
            // waits as PING does. Behind other events of the same call the state comes cut, or
            // not last: ask again.
            next = "STATUS";
        } else if (sendsState && settled() && last < kCompleted && spaced < kSpacedQueries) {
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

}  // namespace tesmir::recipes
