// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// tesmir-command-survey: sends the commands of wpa_cli that only read state to a real supplicant
// on a radio, in the three states a station lives in (nothing scanned, scanned, connected), once
// raw through libwpa_client and once through Execute in direct mode, and prints as Markdown what
// a host gets back; then what waiting mode returns on the flows a host starts. Each direct
// Execute runs in a child process: an empty reply ends the process that receives it.
// With --ssids, among the lab's hostile access points (radio-lab.sh run -a hostile), what a host
// gets back of each SSID instead. Run by scripts/command-survey.sh, which writes
// docs/COMMANDS.md, inside the radio lab (scripts/radio-lab.sh run), whose station and access
// points it expects.
//   tesmir-command-survey SUPPLICANT_VERSION
//   tesmir-command-survey --ssids

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <regex>
#include <string>
#include <vector>

// wpa_ctrl.h needs size_t but does not include stddef.h itself.
#include <wpa_ctrl.h>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"

namespace recipes = tesmir::recipes;

namespace {

#if defined(__aarch64__)
constexpr const char* kHostBuild = "arm64 host";
#else
constexpr const char* kHostBuild = "x86-64 host";
#endif

// With the arguments a user would pass; network 0 is the lab's "tesmir", set up below.
const char* const kCommands[] = {"PING",
                                 "IFNAME",
                                 "STATUS",
                                 "STATUS-VERBOSE",
                                 "STATUS-DRIVER",
                                 "STATUS-NO_EVENTS",
                                 "DRIVER MACADDR",
                                 "MIB",
                                 "INTERFACES",
                                 "INTERFACE_LIST",
                                 "LIST_NETWORKS",
                                 "GET_NETWORK 0 ssid",
                                 "GET_NETWORK 0 key_mgmt",
                                 "GET_NETWORK 0 psk",
                                 "GET_NETWORK 0 scan_freq",
                                 "GET_NETWORK 0 priority",
                                 "GET_NETWORK 0 disabled",
                                 "GET_NETWORK 0 bssid",
                                 "GET version",
                                 "GET tls_library",
                                 "GET ap_scan",
                                 "GET country",
                                 "LIST_CREDS",
                                 "LOG_LEVEL",
                                 "DRIVER_FLAGS",
                                 "DRIVER_FLAGS2",
                                 "PMKSA",
                                 "BSSID_IGNORE",
                                 "BLACKLIST",
                                 "SCAN_RESULTS",
                                 "BSS FIRST",
                                 "BSS LAST",
                                 "BSS FIRST MASK=0x87",
                                 "BSS LAST MASK=0x1",
                                 "BSS ID-1000",
                                 "BSS RANGE=ALL",
                                 "BSS RANGE=1000-1001",
                                 "BSS 02:00:00:00:01:00",
                                 "BSS 00:11:22:33:44:55",
                                 "SIGNAL_POLL",
                                 "PKTCNT_POLL",
                                 "WMM_AC_STATUS",
                                 "TDLS_LINK_STATUS 02:00:00:00:01:00",
                                 "GET_PREF_FREQ_LIST STATION",
                                 "RADIO_WORK show",
                                 "VENDOR_ELEM_GET 0",
                                 "WFD_SUBELEM_GET 0",
                                 "P2P_PEERS",
                                 "DPP_BOOTSTRAP_INFO 1",
                                 "NOT_A_COMMAND",
                                 "GET_CAPABILITY eap",
                                 "GET_CAPABILITY pairwise",
                                 "GET_CAPABILITY group",
                                 "GET_CAPABILITY group_mgmt",
                                 "GET_CAPABILITY key_mgmt",
                                 "GET_CAPABILITY proto",
                                 "GET_CAPABILITY auth_alg",
                                 "GET_CAPABILITY modes",
                                 "GET_CAPABILITY channels",
                                 "GET_CAPABILITY freq",
                                 "GET_CAPABILITY tdls",
                                 "GET_CAPABILITY erp",
                                 "GET_CAPABILITY fips",
                                 "GET_CAPABILITY acs",
                                 "GET_CAPABILITY sae",
                                 "GET_CAPABILITY dpp",
                                 "GET_CAPABILITY multibss",
                                 "GET_CAPABILITY fils",
                                 "GET_CAPABILITY ocv"};

// Network 0: the lab's WPA2 network, on its first access point's channel; enabled only to
// connect.
const char* const kNetwork[] = {"REMOVE_NETWORK all",
                                "BSS_FLUSH 0",
                                "ADD_NETWORK",
                                "SET_NETWORK 0 ssid \"tesmir\"",
                                "SET_NETWORK 0 key_mgmt WPA-PSK",
                                "SET_NETWORK 0 psk \"tesmir-passphrase\"",
                                "SET_NETWORK 0 scan_freq 2412",
                                "SET_NETWORK 0 priority 5"};

// The flows a host starts, in order from connected: the command, and the event that ends it.
struct Flow {
    const char* command;
    const char* pattern;
    // What the event announces, read with a direct query once events have stopped.
    bool (*happened)(WpacliWrapper& client);
};

bool Associated(WpacliWrapper& client) {
    return recipes::CurrentBssid(client, nullptr);
}

bool Disassociated(WpacliWrapper& client) {
    return !Associated(client);
}

bool With(WpacliWrapper& client, const char* bssid) {
    std::string now;
    return recipes::CurrentBssid(client, &now) && now == bssid;
}

const Flow kFlows[] = {
        {"SCAN freq=2412,2437,2462", "^<[0-9]>CTRL-EVENT-SCAN-RESULTS ", Associated},
        {"DISCONNECT", "^<[0-9]>CTRL-EVENT-DISCONNECTED ", Disassociated},
        {"SELECT_NETWORK 0", "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ", Associated},
        {"DISCONNECT", "^<[0-9]>CTRL-EVENT-DISCONNECTED ", Disassociated},
        {"RECONNECT", "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ", Associated},
        {"ROAM 02:00:00:00:02:00", "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ",
         [](WpacliWrapper& client) { return With(client, "02:00:00:00:02:00"); }},
        {"ROAM 02:00:00:00:01:00", "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ",
         [](WpacliWrapper& client) { return With(client, "02:00:00:00:01:00"); }},
};

const char* const kStates[] = {"not scanned", "scanned", "connected"};
constexpr size_t kStateCount = 3;

// A survey with a hole in it would mislead: any failure of our own ends it.
[[noreturn]] void Die(const std::string& what) {
    fprintf(stderr, "tesmir-command-survey: %s\n", what.c_str());
    exit(1);
}

// The whole reply, over libwpa_client's own connection.
std::string Raw(wpa_ctrl* ctrl, const std::string& command) {
    char reply[16384];
    size_t replyLen = sizeof(reply);
    if (wpa_ctrl_request(ctrl, command.data(), command.size(), reply, &replyLen, nullptr) < 0) {
        Die("no reply to " + command);
    }
    return {reply, replyLen};
}

struct Outcome {
    int signal = 0;  // what ended the child, or 0
    int32_t status = 0;
    std::string response;
};

Outcome ThroughExecute(const std::string& socket, const std::string& command) {
    int fds[2];
    if (pipe(fds) != 0) Die("pipe failed");
    const pid_t pid = fork();
    if (pid < 0) Die("fork failed");
    if (pid == 0) {
        close(fds[0]);
        std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
        std::string response;
        int32_t status = client->Open(socket);
        if (status == 0) status = client->Execute(command, "", response, false);
        response.insert(0, reinterpret_cast<const char*>(&status), sizeof(status));
        _exit(write(fds[1], response.data(), response.size()) < 0);
    }
    close(fds[1]);
    std::string out;
    char buffer[256];
    for (ssize_t n; (n = read(fds[0], buffer, sizeof(buffer))) > 0;) out.append(buffer, n);
    close(fds[0]);
    int wstatus = 0;
    waitpid(pid, &wstatus, 0);
    Outcome outcome;
    if (WIFSIGNALED(wstatus)) {
        outcome.signal = WTERMSIG(wstatus);
    } else if (out.size() >= sizeof(outcome.status)) {
        memcpy(&outcome.status, out.data(), sizeof(outcome.status));
        outcome.response = out.substr(sizeof(outcome.status));
    }
    return outcome;
}

// In a table cell: C escapes, '|' escaped, at most |max| bytes shown.
std::string Cell(const std::string& bytes, size_t max = 32) {
    std::string cell;
    for (size_t i = 0; i < bytes.size() && i < max; ++i) {
        const unsigned char c = bytes[i];
        if (c == '\n') {
            cell += "\\n";
        } else if (c == '\t') {
            cell += "\\t";
        } else if (c == '|') {
            cell += "\\|";
        } else if (c < 0x20 || c >= 0x7f) {
            char hex[8];
            snprintf(hex, sizeof(hex), "\\x%02x", c);
            cell += hex;
        } else {
            cell += static_cast<char>(c);
        }
    }
    return "`" + cell + (bytes.size() > max ? "`…" : "`");
}

enum Kind { kEndsProcess, kLosesByte, kCut, kWhole, kKinds };

struct Measure {
    std::string raw;
    Outcome outcome;
    Kind kind = kWhole;
};

Kind KindOf(const std::string& raw, const Outcome& outcome) {
    if (outcome.signal != 0) return kEndsProcess;
    if (raw.size() > 64) return kCut;
    return !raw.empty() && raw.back() == '\n' ? kWhole : kLosesByte;
}

std::vector<Measure> Survey(wpa_ctrl* raw, const std::string& socket) {
    std::vector<Measure> measures;
    for (const char* command : kCommands) {
        Measure measure;
        measure.raw = Raw(raw, command);
        measure.outcome = ThroughExecute(socket, command);
        measure.kind = KindOf(measure.raw, measure.outcome);
        measures.push_back(measure);
    }
    return measures;
}

std::string CellOf(const Measure& m) {
    const std::string size = std::to_string(m.raw.size()) + " B";
    switch (m.kind) {
        case kEndsProcess:
            // The signal of the host build's trap; how a device ends: docs/RELIABILITY.md.
            return size + ": **ends the process** (" + strsignal(m.outcome.signal) + ", the " +
                   kHostBuild + " build's trap)";
        case kLosesByte:
            return size + ", no `\\n`: **last byte lost**, " + Cell(m.outcome.response);
        case kCut:
            return size + ": cut, " + Cell(m.outcome.response);
        default:
            return m.outcome.status != 0 ? size + ": status " + std::to_string(m.outcome.status)
                                         : size + ": " + Cell(m.outcome.response);
    }
}

// "`A`, `B` (scanned, connected)": the commands of one kind, with the states where it held
// unless it held in all.
std::string Named(const std::vector<Measure> (&states)[kStateCount], Kind kind) {
    std::string list;
    for (size_t i = 0; i < std::size(kCommands); ++i) {
        std::string where;
        size_t count = 0;
        for (size_t s = 0; s < kStateCount; ++s) {
            if (states[s][i].kind != kind) continue;
            where += std::string(count++ == 0 ? "" : ", ") + kStates[s];
        }
        if (count == 0) continue;
        list += std::string(list.empty() ? "" : ", ") + "`" + kCommands[i] + "`";
        if (count < kStateCount) list += " (" + where + ")";
    }
    return list.empty() ? "none" : list;
}

// Whether every value of a family (commands beginning with |prefix|) comes without a line feed.
std::string FamilyLineFeeds(const std::vector<Measure> (&states)[kStateCount], const char* prefix) {
    size_t values = 0;
    size_t withLineFeed = 0;
    for (size_t i = 0; i < std::size(kCommands); ++i) {
        if (strncmp(kCommands[i], prefix, strlen(prefix)) != 0) continue;
        for (const std::vector<Measure>& measures : states) {
            const std::string& raw = measures[i].raw;
            if (raw.empty() || raw.rfind("FAIL", 0) == 0) continue;
            ++values;
            withLineFeed += raw.back() == '\n';
        }
    }
    return std::to_string(withLineFeed) + " of " + std::to_string(values);
}

// In a table cell, as it is (UTF-8 shows as text).
std::string Plain(const std::string& bytes) {
    std::string cell;
    for (char c : bytes) cell += c == '|' ? std::string("\\|") : std::string(1, c);
    return "`" + cell + "`";
}

// Every SSID the station hears, as the supplicant prints it, through Execute, and through
// ListNetworks: a table section of its own.
int SurveySsids(wpa_ctrl* raw, WpacliWrapper& client, const std::string& socket) {
    Raw(raw, "BSS_FLUSH 0");
    std::vector<recipes::Bss> found;
    if (!recipes::Scan(client, "2412,2437,2462") || !recipes::ListNetworks(client, &found)) {
        Die("no listing of the access points");
    }
    std::vector<std::string> rows;
    for (const recipes::Bss& bss : found) {
        const std::string query = "BSS " + bss.bssid + " MASK=0x1000";
        const std::string printed = Raw(raw, query);
        if (printed.rfind("ssid=", 0) != 0 || printed.back() != '\n') Die("no SSID in " + query);
        const std::string sent = recipes::DecodeSsid(printed.substr(5, printed.size() - 6));
        const Outcome direct = ThroughExecute(socket, query);
        std::string listed;
        if (bss.ssidWhole && bss.ssid == sent) {
            listed = "whole";
        } else if (!bss.ssidWhole && recipes::SsidCanBe(bss, sent)) {
            listed = "its first " + std::to_string(bss.ssid.size()) + " bytes, `ssidWhole` false";
        } else {
            listed = "**wrong:** " + Cell(bss.ssid, 40);
        }
        rows.push_back(
                "| " + bss.bssid + " | " + Plain(sent) + " | " + std::to_string(sent.size()) +
                " | " +
                (direct.signal != 0 ? std::string("ends the process") : Cell(direct.response, 64)) +
                " | " + listed + " |");
    }
    std::sort(rows.begin(), rows.end());
    printf("## SSIDs as a host gets them\n\n"
           "Among access points whose names pass for events and fields, or are in other "
           "scripts (`radio-lab.sh run -a hostile`, all WPA2-PSK), after a scan: each BSS's "
           "SSID as the access point sends it, its length, the supplicant's own text of it "
           "(`BSS <bssid> MASK=0x1000`) through `Execute`, and what "
           "`tesmir::recipes::ListNetworks` gives, which reads the SSID element in hex "
           "(`MASK=0x401`, `ie=00LL...`): whole up "
           "to a length that the reply's 63 bytes set, and the rest cut with `ssidWhole` false "
           "and the length kept (`SsidCanBe`). The supplicant's text escapes `\"`, `\\` and every "
           "byte past printable ASCII (`\\xNN`), and `Execute` removes its spaces and cuts it, "
           "inside an escape too.\n\n"
           "| BSS | SSID | bytes | its text through `Execute` | `ListNetworks` |\n"
           "|---|---|---|---|---|\n");
    for (const std::string& row : rows) printf("%s\n", row.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const char* lab = getenv("TESMIR_LAB_DIR");
    const char* socketEnv = getenv("TESMIR_LAB_SOCKET");
    constexpr const char* kUsage =
            "usage: run in scripts/radio-lab.sh: tesmir-command-survey VERSION|--ssids\n";
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        fputs(kUsage, stdout);
        return 0;
    }
    if (argc != 2 || lab == nullptr || socketEnv == nullptr) {
        fputs(kUsage, stderr);
        return 64;
    }
    const std::string socket = socketEnv;
    // Client socket in the lab, not in /tmp, where the library's copy of libwpa_client names its
    // own with a counter of its own.
    wpa_ctrl* raw = wpa_ctrl_open2(socket.c_str(), lab);
    if (raw == nullptr) Die("cannot open " + socket);
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(socket) != 0) Die("cannot open " + socket);
    if (strcmp(argv[1], "--ssids") == 0) return SurveySsids(raw, *client, socket);
    for (const char* command : kNetwork) Raw(raw, command);

    std::vector<Measure> states[kStateCount];
    states[0] = Survey(raw, socket);
    if (!recipes::Scan(*client, "2412,2437,2462")) Die("the scan did not complete");
    states[1] = Survey(raw, socket);
    std::string event;
    if (!recipes::Command(*client, "SELECT_NETWORK 0") ||
        !recipes::AwaitEvent(
                *client, kFlows[2].pattern, [&client] { return Associated(*client); }, &event)) {
        Die("no connection to network 0");
    }
    states[2] = Survey(raw, socket);

    std::vector<std::string> flows;
    for (const Flow& flow : kFlows) {
        std::string response;
        std::string event;
        const int32_t status = client->Execute(flow.command, flow.pattern, response, true);
        const bool matched = status == 0 && std::regex_search(response, std::regex(flow.pattern));
        const bool done = matched || recipes::AwaitEvent(
                                             *client, flow.pattern,
                                             [&] { return flow.happened(*client); }, &event);
        if (!done) Die(std::string("no end to ") + flow.command);
        flows.push_back("| `" + std::string(flow.command) + "` | `" + flow.pattern + "` | " +
                        (status == 0 ? Cell(response, 60) : "status " + std::to_string(status)) +
                        " | " + (matched ? "yes" : "no") + " | " +
                        (matched         ? ""
                         : event.empty() ? "lost; the state shows it"
                                         : "yes") +
                        " |");
    }
    Raw(raw, "REMOVE_NETWORK all");
    wpa_ctrl_close(raw);

    char date[16];
    const time_t now = time(nullptr);
    strftime(date, sizeof(date), "%Y-%m-%d", gmtime(&now));
    printf("<!-- SPDX-License-Identifier: Apache-2.0 -->\n"
           "<!-- Generated by scripts/command-survey.sh; do not edit by hand. -->\n\n"
           "# What Execute gives back, command by command, on a radio\n\n"
           "Measured on %s against wpa_supplicant %s with the nl80211 driver: a station on a "
           "mac80211_hwsim radio in the User-Mode Linux kernel of "
           "`scripts/radio-lab.sh`, beside hostapd access points (`tesmir`, WPA2-PSK, on 2412 and "
           "2437 MHz; `tesmir-sae` and `tesmir-open` on 2462 MHz). Network 0 is `tesmir`. Each "
           "command was sent in three states: **not scanned** (no BSS held), **scanned** (after "
           "a scan of the three channels) and **connected** (to network 0). In each it was sent "
           "raw, through libwpa_client with a 16 KiB reply buffer, and through `Execute` in "
           "direct mode, in a child process. `Execute` receives at most 64 bytes, drops the last "
           "byte received whatever it is, and removes every space; a reply of 0 bytes ends the "
           "process (an unsigned-overflow check).\n\n",
           date, argv[1]);
    const char* const kHeadings[] = {
            "End the process (0-byte reply)",
            "Lose their last real byte (no line feed)",
            "Cut to 63 bytes (longer than 64 bytes)",
    };
    for (int kind = kEndsProcess; kind < kWhole; ++kind) {
        printf("**%s:** %s.\n\n", kHeadings[kind], Named(states, static_cast<Kind>(kind)).c_str());
    }
    printf("**Families.** `GET_NETWORK <id> <field>` and `GET <name>` values come without a line "
           "feed (values with one here: %s and %s), so each loses its last real byte: `5` "
           "comes back empty, `\"tesmir\"` as `\"tesmir`. Their `FAIL` replies keep their line "
           "feed. Every `BSS` query of an entry that is not held is empty: before any scan, an "
           "id past the last, a range out of range, a BSSID not seen. `BSS` with `MASK=` "
           "selects the fields that fit (`0x87`: id, bssid, freq, level).\n\n",
           FamilyLineFeeds(states, "GET_NETWORK ").c_str(),
           FamilyLineFeeds(states, "GET ").c_str());

    printf("## Waiting mode on the flows a host starts\n\n"
           "From connected, in this order, `Execute(command, pattern, response, true)`; then, "
           "where that was not the awaited event, waiting-mode calls on `PING` until it came "
           "(`tesmir::recipes::Await`), or until 3 s without events and a direct query showed "
           "what it announces: the event was then sent between two calls, and lost. Which early "
           "event comes first, and which events are lost, vary from run to run. That the awaited "
           "one does not come first, where the table says no, held in every run on the lab's "
           "simulated clock, where the host reads each event as it comes. A host that reads "
           "late (on the real clock, a loaded machine) can find the whole flow queued behind "
           "the early event, and waiting mode then walks on to the awaited one.\n\n"
           "| command | pattern | `Execute` returned, status 0 | matched | the event, later |\n"
           "|---|---|---|---|---|\n");
    for (const std::string& flow : flows) printf("%s\n", flow.c_str());

    printf("\n## Command by command\n\n"
           "Bytes of the raw reply, then what `Execute` gives.\n\n"
           "| command | not scanned | scanned | connected |\n|---|---|---|---|\n");
    for (size_t i = 0; i < std::size(kCommands); ++i) {
        printf("| `%s` | %s | %s | %s |\n", kCommands[i], CellOf(states[0][i]).c_str(),
               CellOf(states[1][i]).c_str(), CellOf(states[2][i]).c_str());
    }
    return 0;
}
