// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// tesmir-command-survey: sends the commands of wpa_cli that only read state to a real supplicant,
// once raw through libwpa_client and once through Execute in direct mode, and prints as Markdown
// what a host gets back. Each Execute runs in a child process: an empty reply ends the process
// that receives it. Run by scripts/command-survey.sh, which writes docs/COMMANDS.md, beside the
// lab that TESMIR_LAB_DIR names (scripts/supplicant-lab.sh run).
//   tesmir-command-survey SUPPLICANT_VERSION DRIVER

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

// wpa_ctrl.h needs size_t but does not include stddef.h itself.
#include <wpa_ctrl.h>

#include "WpacliWrapper.h"

namespace {

// With the arguments a user would pass; the network read is the lab's own, set up below.
const char* const kCommands[] = {"PING",
                                 "IFNAME",
                                 "STATUS",
                                 "STATUS-VERBOSE",
                                 "STATUS-DRIVER",
                                 "MIB",
                                 "INTERFACES",
                                 "INTERFACE_LIST",
                                 "LIST_NETWORKS",
                                 "GET_NETWORK 0 ssid",
                                 "GET_NETWORK 0 key_mgmt",
                                 "GET_NETWORK 0 eap",
                                 "GET_NETWORK 0 identity",
                                 "GET_NETWORK 0 priority",
                                 "GET_NETWORK 0 disabled",
                                 "GET_NETWORK 0 bssid",
                                 "GET version",
                                 "GET tls_library",
                                 "GET ap_scan",
                                 "GET country",
                                 "LIST_CREDS",
                                 "GET_CRED 0 realm",
                                 "LOG_LEVEL",
                                 "DRIVER_FLAGS",
                                 "DRIVER_FLAGS2",
                                 "PMKSA",
                                 "BSSID_IGNORE",
                                 "BLACKLIST",
                                 "SCAN_RESULTS",
                                 "BSS FIRST",
                                 "BSS LAST",
                                 "BSS 0",
                                 "BSS RANGE=ALL",
                                 "BSS 00:11:22:33:44:55",
                                 "SIGNAL_POLL",
                                 "PKTCNT_POLL",
                                 "WMM_AC_STATUS",
                                 "TDLS_LINK_STATUS 00:11:22:33:44:55",
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

// The lab's network 0, so that GET_NETWORK has something to read.
const char* const kSetup[] = {"REMOVE_NETWORK all",
                              "ADD_NETWORK",
                              "SET_NETWORK 0 ssid \"tesmir-lab\"",
                              "SET_NETWORK 0 key_mgmt IEEE8021X",
                              "SET_NETWORK 0 eap MD5",
                              "SET_NETWORK 0 identity \"tesmir\"",
                              "SET_NETWORK 0 priority 5"};

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
std::string Cell(const std::string& bytes, size_t max = 40) {
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

Kind KindOf(const std::string& raw, const Outcome& outcome) {
    if (outcome.signal != 0) return kEndsProcess;
    if (raw.size() > 64) return kCut;
    return !raw.empty() && raw.back() == '\n' ? kWhole : kLosesByte;
}

}  // namespace

int main(int argc, char** argv) {
    const char* lab = getenv("TESMIR_LAB_DIR");
    if (argc != 3 || lab == nullptr) {
        fprintf(stderr, "usage: TESMIR_LAB_DIR=DIR tesmir-command-survey VERSION DRIVER\n");
        return 64;
    }
    const std::string socket = std::string(lab) + "/ctrl/veth0";
    // Client socket in the lab, not in /tmp, where the library's copy of libwpa_client names its
    // own with a counter of its own.
    wpa_ctrl* raw = wpa_ctrl_open2(socket.c_str(), lab);
    if (raw == nullptr) Die("cannot open " + socket);
    for (const char* command : kSetup) Raw(raw, command);

    std::vector<std::string> rows;
    std::vector<std::string> named[kKinds];
    for (const char* command : kCommands) {
        const std::string reply = Raw(raw, command);
        const Outcome outcome = ThroughExecute(socket, command);
        const Kind kind = KindOf(reply, outcome);
        static const char* const kWhat[] = {"**ends the process**", "**last real byte lost**",
                                            "cut to 63 bytes", "line feed dropped"};
        std::string gives = outcome.signal != 0   ? strsignal(outcome.signal)
                            : outcome.status != 0 ? "status " + std::to_string(outcome.status)
                                                  : Cell(outcome.response);
        named[kind].push_back(std::string("`") + command + "`");
        const char* lineFeed = reply.empty() ? "" : reply.back() == '\n' ? "yes" : "no";
        rows.push_back("| `" + std::string(command) + "` | " + std::to_string(reply.size()) +
                       " | " + lineFeed + " | " + (reply.empty() ? "" : Cell(reply)) + " | " +
                       gives + " | " + kWhat[kind] + " |");
    }
    Raw(raw, "REMOVE_NETWORK all");
    wpa_ctrl_close(raw);

    char date[16];
    const time_t now = time(nullptr);
    strftime(date, sizeof(date), "%Y-%m-%d", gmtime(&now));
    printf("<!-- SPDX-License-Identifier: Apache-2.0 -->\n"
           "<!-- Generated by scripts/command-survey.sh; do not edit by hand. -->\n\n"
           "# What Execute gives back, command by command\n\n"
           "Measured on %s against wpa_supplicant %s with the %s driver, in the lab of "
           "`scripts/supplicant-lab.sh` (one network configured, nothing scanned). Each command "
           "was sent twice: raw, through libwpa_client with a 16 KiB reply buffer, and through "
           "`Execute` in direct mode, in a child process. `Execute` receives at most 64 bytes, "
           "drops the last byte received whatever it is, and removes every space; a reply of 0 "
           "bytes ends the process (an unsigned-overflow trap).\n\n",
           date, argv[1], argv[2]);
    const char* const kHeadings[] = {
            "End the process (0-byte reply)",
            "Lose their last real byte (no line feed)",
            "Cut to 63 bytes (longer than 64 bytes)",
    };
    for (int kind = kEndsProcess; kind < kWhole; ++kind) {
        printf("**%s:** ", kHeadings[kind]);
        for (size_t i = 0; i < named[kind].size(); ++i) {
            printf("%s%s", i == 0 ? "" : ", ", named[kind][i].c_str());
        }
        printf("%s.\n\n", named[kind].empty() ? "none" : "");
    }
    printf("The wired driver cannot scan: `SCAN_RESULTS` gives only its header and every `BSS` "
           "query is empty here. On a radio, `BSS` entries and scan results are longer than 64 "
           "bytes and come back cut; `BSS` of an entry that is not there (after a flush, or an "
           "index past the last) stays empty and ends the process.\n\n"
           "| command | bytes | ends in `\\n` | raw reply | `Execute` gives | what happens |\n"
           "|---|---|---|---|---|---|\n");
    for (const std::string& row : rows) printf("%s\n", row.c_str());
    return 0;
}
