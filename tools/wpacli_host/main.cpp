// wpacli-host: drives a wpa_supplicant control socket through libtesmirwpacliwrapper, using only
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

namespace {

constexpr int kExitUsage = 64;  // EX_USAGE
constexpr int kMaxStatusExit = 125;

void PrintUsage(FILE* out) {
    fprintf(out,
            "usage: wpacli-host -p <control socket> [-w <regex>] [-m <mask>] [-k <keys>] "
            "<command> [args...]\n"
            "\n"
            "Sends one supplicant command and prints the response.\n"
            "  -p PATH   control socket, e.g. /data/vendor/wifi/wpa/sockets/wlan0\n"
            "  -w REGEX  waiting mode: print the first event matching REGEX (ECMAScript) within\n"
            "            3 s, or the last event queued if none matches\n"
            "  -m MASK   log mask gTesmirLogLevel (0x01 errors, 0x04 info, 0x08 trace); also\n"
            "            lets this process log at DEBUG priority\n"
            "  -k KEYS   comma-separated key patterns: print the word after each as key=value\n"
            "  --help    this text\n"
            "\n"
            "Exit status: 0 on success, otherwise the library's negative status as a positive\n"
            "number (1: open or attach failed, 2: request timed out, 22: no event in time),\n"
            "64 for bad arguments.\n");
}

int UsageError(const char* message) {
    fprintf(stderr, "wpacli-host: %s\n\n", message);
    PrintUsage(stderr);
    return kExitUsage;
}

int ExitCodeFor(int32_t status) {
    if (status >= 0) return 0;
    return status < -kMaxStatusExit ? kMaxStatusExit : -status;
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
    // '+' stops at the first command word, so commands may carry their own dashes.
    while ((opt = getopt_long(argc, argv, "+p:w:m:k:h", kLongOptions, nullptr)) != -1) {
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
                    return UsageError("-m takes a number such as 0x0d");
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
                return UsageError("unknown option");
        }
    }
    if (ctrlPath.empty()) return UsageError("-p <control socket> is required");
    if (optind >= argc) return UsageError("no command given");

    std::string command = argv[optind];
    for (int i = optind + 1; i < argc; ++i) command.append(" ").append(argv[i]);

    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    int32_t status = client->Open(ctrlPath);
    if (status != 0) {
        fprintf(stderr, "wpacli-host: cannot open %s (status %d)\n", ctrlPath.c_str(), status);
        return ExitCodeFor(status);
    }
    std::string response;
    status = client->Execute(command, pattern, response, wait);
    if (status != 0) {
        fprintf(stderr, "wpacli-host: %s failed (status %d)\n", command.c_str(), status);
        return ExitCodeFor(status);
    }
    printf("%s\n", response.c_str());

    if (!keyList.empty()) {
        const std::vector<std::string> keys = SplitKeys(keyList);
        std::map<std::string, std::string> values;
        for (const std::string& key : keys) values[key] = "";
        WpaStringUtils::GetKeyValues(response, values);
        for (const std::string& key : keys) printf("%s=%s\n", key.c_str(), values[key].c_str());
    }
    return 0;
}
