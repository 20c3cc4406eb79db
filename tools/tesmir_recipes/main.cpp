// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// tesmir-recipes: runs one recipe of TesmirRecipes.h against a supplicant's control socket and
// prints what it found. Exit statuses in kUsage.

#include <inttypes.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"

namespace recipes = tesmir::recipes;

namespace {

constexpr const char* kUsage =
        "usage: tesmir-recipes [--in-process | --helper PATH] [--repeat N] SOCKET RECIPE "
        "[ARGS...]\n"
        "  scan [FREQS]                        scan (FREQS in MHz: 2412,2437) and wait for "
        "results\n"
        "  list                                every BSS held: bssid, freq, level, flags, ssid\n"
        "                                      (its bytes; \"[cut: N bytes]\" after a part),\n"
        "                                      through tesmir-list-helper beside this tool\n"
        "  connect SSID open|psk|sae [PASSPHRASE] [FREQS]\n"
        "                                      connect (FREQS in MHz: \"2412 2437\")\n"
        "  status                              the current BSSID, and the signal\n"
        "  disconnect | reconnect | forget     forget removes every network\n"
        "  roam BSSID                          move to another BSS of the same network\n"
        "  wait-link-loss SECONDS              wait for the link to drop; print the reason\n"
        "  --in-process   list in this process: an entry that goes away can end it\n"
        "  --helper PATH  the listing helper (default: tesmir-list-helper beside this tool)\n"
        "  --repeat N     run the recipe N times, a line for each run; exit 0 when all succeeded\n"
        "  --help         this text\n"
        "exit status: 0 done, 1 not done (the reason on standard error), 64 bad usage\n";

// Each recipe with the number of arguments it takes.
struct Recipe {
    const char* name;
    size_t least;
    size_t most;
};
constexpr Recipe kRecipes[] = {{"scan", 0, 1},   {"list", 0, 0},       {"connect", 2, 4},
                               {"status", 0, 0}, {"disconnect", 0, 0}, {"reconnect", 0, 0},
                               {"forget", 0, 0}, {"roam", 1, 1},       {"wait-link-loss", 1, 1}};

int Usage() {
    fputs(kUsage, stderr);
    return 64;
}

struct Options {
    bool inProcess = false;
    std::string helper;
    int64_t repeat = 0;  // 0: once, printing what the recipe found
    bool Quiet() const { return repeat > 0; }
};

// tesmir-list-helper, installed beside this tool.
std::string HelperBesideMe() {
    char self[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (n <= 0) return "tesmir-list-helper";
    const std::string path(self, static_cast<size_t>(n));
    return path.substr(0, path.rfind('/') + 1) + "tesmir-list-helper";
}

bool PrintStatus(WpacliWrapper& client, const Options& options) {
    std::string bssid;
    recipes::Signal signal;
    if (!recipes::CurrentBssid(client, &bssid) || !recipes::ReadSignal(client, &signal)) {
        return false;
    }
    if (!options.Quiet()) {
        printf("bssid=%s freq=%d rssi=%d linkspeed=%d\n", bssid.c_str(), signal.freq, signal.rssi,
               signal.linkSpeed);
    }
    return true;
}

// Lists, in this process or through the helper; |note| tells what the helpers did.
bool List(WpacliWrapper& client, const std::string& socket, const Options& options,
          std::string* note) {
    std::vector<recipes::Bss> found;
    if (options.inProcess) {
        if (!recipes::ListNetworks(client, &found)) return false;
    } else {
        recipes::Isolation isolation;
        isolation.helper = options.helper.empty() ? HelperBesideMe() : options.helper;
        recipes::ListingReport report;
        const bool listed = recipes::ListNetworksIsolated(socket, &found, &report, isolation);
        *note = " helpers=" + std::to_string(report.helpers) +
                " ended=" + std::to_string(report.ended) + " hung=" + std::to_string(report.hung) +
                " failed=" + std::to_string(report.failed);
        if (report.startError != 0) {
            fprintf(stderr,
                    "tesmir-recipes: cannot start the listing helper %s: %s (--helper PATH names "
                    "another)\n",
                    report.startPath.c_str(), strerror(report.startError));
        }
        if (!listed) return false;
    }
    *note = " bss=" + std::to_string(found.size()) + *note;
    if (options.Quiet()) return true;
    for (const recipes::Bss& bss : found) {
        printf("%s %d %d %s %s%s\n", bss.bssid.c_str(), bss.freq, bss.level, bss.flags.c_str(),
               bss.ssid.c_str(),
               bss.ssidWhole ? ""
                             : (" [cut: " + std::to_string(bss.ssidLength) + " bytes]").c_str());
    }
    return true;
}

bool Run(WpacliWrapper& client, const std::string& socket, const std::vector<std::string>& args,
         const Options& options, std::string* note) {
    const std::string& recipe = args[0];
    const auto arg = [&args](size_t i) { return i < args.size() ? args[i] : std::string(); };
    if (recipe == "scan") return recipes::Scan(client, arg(1));
    if (recipe == "list") return List(client, socket, options, note);
    if (recipe == "connect") {
        const std::string kind = arg(2);
        const recipes::Security security = kind == "sae"   ? recipes::Security::kWpa3Sae
                                           : kind == "psk" ? recipes::Security::kWpa2Psk
                                                           : recipes::Security::kOpen;
        const bool open = security == recipes::Security::kOpen;
        std::string bssid;
        return recipes::Connect(client, arg(1), security, open ? "" : arg(3), arg(open ? 3 : 4),
                                &bssid) &&
               PrintStatus(client, options);
    }
    if (recipe == "status") return PrintStatus(client, options);
    if (recipe == "disconnect") return recipes::Disconnect(client);
    if (recipe == "reconnect") {
        return recipes::Reconnect(client, nullptr) && PrintStatus(client, options);
    }
    if (recipe == "forget") return recipes::Forget(client);
    if (recipe == "roam") return recipes::Roam(client, arg(1)) && PrintStatus(client, options);
    if (recipe == "wait-link-loss") {
        int reason = 0;
        if (!recipes::WaitForLinkLoss(client, atoi(arg(1).c_str()), &reason)) return false;
        *note = " reason=" + std::to_string(reason);
        if (!options.Quiet()) printf("reason=%d\n", reason);
        return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--help") {
            fputs(kUsage, stdout);
            return 0;
        }
        if (word == "--in-process") {
            options.inProcess = true;
        } else if (word == "--helper" && i + 1 < argc) {
            options.helper = argv[++i];
        } else if (word == "--repeat" && i + 1 < argc) {
            char* end = nullptr;
            options.repeat = strtol(argv[++i], &end, 10);
            if (*argv[i] == '\0' || *end != '\0' || options.repeat < 1) return Usage();
        } else if (word.rfind("--", 0) == 0) {
            return Usage();
        } else {
            words.push_back(word);
        }
    }
    if (words.size() < 2) return Usage();
    const Recipe* recipe = nullptr;
    for (const Recipe& r : kRecipes) {
        if (words[1] == r.name) recipe = &r;
    }
    const size_t args = words.size() - 2;
    if (recipe == nullptr || args < recipe->least || args > recipe->most) return Usage();
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(words[0]) != 0) {
        fprintf(stderr, "tesmir-recipes: cannot open %s\n", words[0].c_str());
        return 1;
    }
    const std::vector<std::string> run(words.begin() + 1, words.end());
    const int64_t runs = options.Quiet() ? options.repeat : 1;
    int64_t failed = 0;
    for (int64_t i = 1; i <= runs; ++i) {
        std::string note;
        const bool ok = Run(*client, words[0], run, options, &note);
        failed += ok ? 0 : 1;
        if (options.Quiet()) {
            printf("run %" PRId64 ": %s%s\n", i, ok ? "ok" : "failed", note.c_str());
            fflush(stdout);
        } else if (!ok) {
            fprintf(stderr, "tesmir-recipes: %s did not succeed%s\n", recipe->name, note.c_str());
        }
    }
    return failed == 0 ? 0 : 1;
}
