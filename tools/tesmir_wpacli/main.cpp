// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// tesmir-wpacli: drives a wpa_supplicant control socket through libtesmirwpacliwrapper, using only
// its public interface. Meant to be pushed to a device to try the library by hand.

#include <errno.h>
#include <getopt.h>
#include <stdio.h>
#include <stdlib.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <android/log.h>

#include "WpaStringUtils.h"
#include "WpacliWrapper.h"
#include "pattern_check.h"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitRequestTimedOut = 2;
constexpr int kExitFailReply = 3;
constexpr int kExitUnknownCommand = 4;
constexpr int kExitNoMatch = 5;
constexpr int kExitNoEvent = 22;  // EINVAL, the library's status for it
constexpr int kExitUsage = 64;    // EX_USAGE

// The longest command wpa_supplicant takes (CTRL_IFACE_MAX_LEN in 2.10 and AOSP's fork): a longer
// one gets no reply, and the request waits out libwpa_client's 10 s.
constexpr size_t kMaxCommand = 8192;
// What the tool's own messages show of a command.
constexpr size_t kShownCommand = 80;

void PrintUsage(FILE* out) {
    fprintf(out,
            "usage: tesmir-wpacli -p <control socket> [-w <regex> [-k <keys>]] [-m <mask>]\n"
            "                     [--] <command> [args...]\n"
            "\n"
            "Sends one supplicant command through libtesmirwpacliwrapper and prints the response.\n"
            "  -p PATH   control socket, e.g. /data/vendor/wifi/wpa/sockets/wlan0\n"
            "  -w REGEX  waiting mode: print the first event within 3 s that contains a match\n"
            "            of REGEX (ECMAScript), or else the last one queued (exit status 5).\n"
            "            A malformed REGEX is refused before anything is sent (the library\n"
            "            would end the process on it once an event has arrived).\n"
            "  -k KEYS   with -w: comma-separated key patterns; prints, as key=value, the word\n"
            "            of the event after the first word each key is found in; checked\n"
            "            as REGEX is\n"
            "  -m MASK   log mask gTesmirLogLevel (0x01 errors, 0x04 info, 0x08 trace); 0x04\n"
            "            logs every command, passwords included. Lets this process log DEBUG.\n"
            "  --help    this text\n"
            "Options may also follow the command, as with wpa_cli; words after -- are the\n"
            "command's own. A command longer than 8192 bytes, which the supplicant ignores,\n"
            "is refused before it is sent.\n"
            "\n"
            "A direct reply comes as the library gives it: at most 63 bytes, its last byte\n"
            "dropped (the line feed, or a real byte where there is none), spaces removed.\n"
            "A reply of 0 bytes ends the process. With wpa_supplicant 2.10 on nl80211 these\n"
            "give one: BSS of an entry not held (any BSS before a scan, an id past the last),\n"
            "BSSID_IGNORE (BLACKLIST) when empty, INTERFACE_LIST, RADIO_WORK show,\n"
            "VENDOR_ELEM_GET, WFD_SUBELEM_GET. GET_NETWORK and GET values lose their last\n"
            "byte; BSS FIRST MASK=0x87 fits where BSS FIRST is cut (docs/COMMANDS.md).\n"
            "\n"
            "Waiting mode prints the first event that comes, which on SCAN, SELECT_NETWORK,\n"
            "RECONNECT or ROAM is an early one (exit 5): call again with -w REGEX PING until\n"
            "it matches. An event sent between two calls is lost (docs/RECIPES.md).\n"
            "\n"
            "Exit status:\n"
            "   0  success\n"
            "   1  cannot open the socket, the attach failed, or the wait failed\n"
            "   2  no reply to the command within 10 s\n"
            "   3  the supplicant replied FAIL (direct mode)\n"
            "   4  the supplicant replied UNKNOWN COMMAND (direct mode)\n"
            "   5  waiting mode: the event printed does not match REGEX\n"
            "  22  waiting mode: no event arrived within 3 s, or it could not be received\n"
            "  64  bad arguments: also a malformed REGEX or key, a command too long\n");
}

int UsageError(const char* message) {
    fprintf(stderr, "tesmir-wpacli: %s\n\n", message);
    PrintUsage(stderr);
    return kExitUsage;
}

// A command as the tool's messages show it: at most its first 80 bytes.
std::string Shown(const std::string& command) {
    if (command.size() <= kShownCommand) return command;
    return command.substr(0, kShownCommand) + "... (" + std::to_string(command.size()) + " bytes)";
}

// Refuses a pattern the library would end the process on. Returns 0 when it is well-formed.
int CheckPattern(const char* what, const std::string& pattern) {
    std::string error;
    if (IsValidPattern(pattern, &error)) return 0;
    fprintf(stderr, "tesmir-wpacli: %s '%s' is not a valid ECMAScript regex: %s\n", what,
            Shown(pattern).c_str(), error.c_str());
    return kExitUsage;
}

// The library fails with -1 (open, attach, select, pending), -2 (no reply from the supplicant)
// and -22 (no event, or a failed receive).
int ExitCodeFor(int32_t status) {
    if (status == -2) return kExitRequestTimedOut;
    return status == -22 ? kExitNoEvent : kExitFailed;
}

// Direct replies as they arrive here: "FAIL\n" and "UNKNOWN COMMAND\n" cut and without spaces.
int ExitCodeForReply(const std::string& reply) {
    if (reply == "FAIL" || reply.rfind("FAIL-", 0) == 0) return kExitFailReply;
    return reply == "UNKNOWNCOMMAND" ? kExitUnknownCommand : 0;
}

// "a, b" gives "a" and "b": blanks around a key would keep it from ever matching a word.
std::vector<std::string> SplitKeys(const std::string& list) {
    std::vector<std::string> keys;
    WpaStringUtils::SplitString(list, ',', keys);
    for (std::string& key : keys) {
        const size_t first = key.find_first_not_of(" \t");
        key = first == std::string::npos
                      ? ""
                      : key.substr(first, key.find_last_not_of(" \t") + 1 - first);
    }
    return keys;
}

}  // namespace

int main(int argc, char** argv) {
    std::string ctrlPath;
    std::string pattern;
    std::string keyList;
    bool wait = false;

    static const option kLongOptions[] = {{"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}};
    int opt;
    // Options anywhere, as wpa_cli takes them; "--" ends them for command words with dashes.
    while ((opt = getopt_long(argc, argv, "p:w:m:k:h", kLongOptions, nullptr)) != -1) {
        switch (opt) {
            case 'p':
                ctrlPath = optarg;
                break;
            case 'w':
                pattern = optarg;
                wait = true;
                break;
            case 'm': {
                char* end = nullptr;
                errno = 0;
                const uint64_t mask = strtoull(optarg, &end, 0);
                if (errno != 0 || end == optarg || *end != '\0' || mask > UINT32_MAX) {
                    return UsageError("-m takes a number such as 0x09");
                }
                gTesmirLogLevel = static_cast<uint32_t>(mask);
                // Otherwise liblog may drop the trace lines the mask asks for.
                __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
                break;
            }
            case 'k':
                keyList = optarg;
                break;
            case 'h':
                PrintUsage(stdout);
                return 0;
            default:
                return UsageError("unknown option (command words that begin with '-' go after --)");
        }
    }
    if (ctrlPath.empty()) return UsageError("-p <control socket> is required");
    if (optind >= argc) return UsageError("no command given");
    if (!keyList.empty() && !wait) {
        return UsageError("-k takes the words of an event, with -w: a direct reply has no spaces");
    }

    std::string command = argv[optind];
    for (int i = optind + 1; i < argc; ++i) command.append(" ").append(argv[i]);
    if (command.size() > kMaxCommand) {
        fprintf(stderr, "tesmir-wpacli: %s is longer than the %zu bytes the supplicant takes\n",
                Shown(command).c_str(), kMaxCommand);
        return kExitUsage;
    }
    const std::vector<std::string> keys = SplitKeys(keyList);
    if (wait && CheckPattern("-w", pattern) != 0) return kExitUsage;
    for (const std::string& key : keys) {
        if (CheckPattern("-k key", key) != 0) return kExitUsage;
    }

    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    int32_t status = client->Open(ctrlPath);
    if (status != 0) {
        fprintf(stderr, "tesmir-wpacli: cannot open %s (status %d)\n", ctrlPath.c_str(), status);
        return ExitCodeFor(status);
    }
    std::string response;
    status = client->Execute(command, pattern, response, wait);
    if (status != 0) {
        // -22 comes only from the wait: the command itself went through.
        fprintf(stderr, "tesmir-wpacli: %s %s (status %d)\n", Shown(command).c_str(),
                status == -22 ? "was sent, but no event arrived within 3 s" : "failed", status);
        return ExitCodeFor(status);
    }
    printf("%s\n", response.c_str());
    if (!wait) return ExitCodeForReply(response);

    if (!keyList.empty()) {
        std::map<std::string, std::string> values;
        for (const std::string& key : keys) values[key] = "";
        WpaStringUtils::GetKeyValues(response, values);
        for (const std::string& key : keys) printf("%s=%s\n", key.c_str(), values[key].c_str());
    }
    // The library hands back the last event queued when none matches.
    if (!PatternMatches(pattern, response)) {
        fprintf(stderr, "tesmir-wpacli: no event matched; this is the last one queued\n");
        return kExitNoMatch;
    }
    return 0;
}
