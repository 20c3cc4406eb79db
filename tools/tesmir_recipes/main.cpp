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
        "  connect SSID open|owe [FREQS] [FIELD=VALUE...]\n"
        "  connect SSID psk|sae PASSPHRASE [FREQS] [FIELD=VALUE...]\n"
        "  connect SSID eap [FREQS] FIELD=VALUE...\n"
        "                                      add a network and connect (FREQS in MHz: \"2412 "
        "2437\");\n"
        "                                      FIELD is a network field by the supplicant's name:\n"
        "                                      eap identity anonymous_identity password phase1\n"
        "                                      phase2 ca_cert ca_path domain_suffix_match\n"
        "                                      domain_match altsubject_match subject_match\n"
        "                                      client_cert private_key private_key_passwd "
        "scan_ssid\n"
        "                                      key_mgmt ieee80211w proactive_key_caching;\n"
        "                                      VALUE \"-\" (and PASSPHRASE \"-\") takes the next "
        "line\n"
        "                                      of standard input\n"
        "  status                              the current BSSID, and the signal\n"
        "  disconnect | reconnect | forget     forget removes every network\n"
        "  roam BSSID [ds]                     move to another BSS of the same network (ds: FT\n"
        "                                      over the DS); the line ends with how: via=ft,\n"
        "                                      ft-ds, cached, full or unknown (TesmirRecipes.h)\n"
        "  wait-link-loss SECONDS              wait for the link to drop; print the reason\n"
        "  networks                            the configured networks: id, flags (\"[]\" none; "
        "\"?\"\n"
        "                                      after them: more may be cut off), ssid (without "
        "its\n"
        "                                      spaces; \"[cut]\" after a part)\n"
        "  enable ID | disable ID | remove ID  one configured network\n"
        "  priority ID N                       set its priority\n"
        "  save                                write the configuration (needs update_config=1)\n"
        "  --in-process   list in this process: an entry that goes away can end it\n"
        "  --helper PATH  the listing helper (default: tesmir-list-helper beside this tool)\n"
        "  --repeat N     run the recipe N times, a line for each run; exit 0 when all succeeded\n"
        "  --help         this text\n"
        "exit status: 0 done, 1 not done (the reason on standard error), 64 bad usage; a connect\n"
        "that does not succeed ends with its outcome on the last line of standard error:\n"
        "  2 rejected-credentials\n"
        "  3 rejected-server-certificate reason=N depth=D   (-1: cut off the event)\n"
        "  4 asks-for FIELD\n"
        "  5 not-found\n"
        "  6 timed-out\n"
        "  7 rejected         (an EAP failure whose cause no event told)\n";

// RoamVia's names, in its order.
constexpr const char* kVias[] = {"unknown", "ft", "ft-ds", "cached", "full"};

constexpr int kNotDone = 1;
constexpr int kBadUsage = 64;

// Each recipe with the number of arguments it takes.
struct Recipe {
    const char* name;
    size_t least;
    size_t most;
};
constexpr size_t kAny = 1000;
constexpr Recipe kRecipes[] = {{"scan", 0, 1},     {"list", 0, 0},       {"connect", 2, kAny},
                               {"status", 0, 0},   {"disconnect", 0, 0}, {"reconnect", 0, 0},
                               {"forget", 0, 0},   {"roam", 1, 2},       {"wait-link-loss", 1, 1},
                               {"networks", 0, 0}, {"enable", 1, 1},     {"disable", 1, 1},
                               {"remove", 1, 1},   {"priority", 2, 2},   {"save", 0, 0}};

int Usage() {
    fputs(kUsage, stderr);
    return kBadUsage;
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

bool PrintStatus(WpacliWrapper& client, const Options& options, const std::string& more = "") {
    std::string bssid;
    recipes::Signal signal;
    if (!recipes::CurrentBssid(client, &bssid) || !recipes::ReadSignal(client, &signal)) {
        return false;
    }
    if (!options.Quiet()) {
        printf("bssid=%s freq=%d rssi=%d linkspeed=%d%s\n", bssid.c_str(), signal.freq, signal.rssi,
               signal.linkSpeed, more.c_str());
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

struct ConnectArgs {
    std::string ssid;
    recipes::Security security = recipes::Security::kOpen;
    std::string passphrase;
    std::string freqs;
    std::vector<recipes::NetworkField> fields;
};

// The next line of standard input, without its line feed: how secrets stay out of the process
// list.
bool ReadLine(std::string* line) {
    line->clear();
    for (int c; (c = getchar()) != EOF;) {
        if (c == '\n') return true;
        *line += static_cast<char>(c);
    }
    return !line->empty();
}

// connect's arguments, every value read, before anything is sent; false on bad usage.
bool ParseConnect(const std::vector<std::string>& args, ConnectArgs* connect) {
    connect->ssid = args[1];
    const std::string& kind = args[2];
    using recipes::Security;
    if (kind == "open") {
        connect->security = Security::kOpen;
    } else if (kind == "owe") {
        connect->security = Security::kOwe;
    } else if (kind == "psk") {
        connect->security = Security::kWpa2Psk;
    } else if (kind == "sae") {
        connect->security = Security::kWpa3Sae;
    } else if (kind == "eap") {
        connect->security = Security::kEap;
    } else {
        return false;
    }
    size_t next = 3;
    if (connect->security == Security::kWpa2Psk || connect->security == Security::kWpa3Sae) {
        if (args.size() <= next) return false;
        connect->passphrase = args[next++];
        if (connect->passphrase == "-" && !ReadLine(&connect->passphrase)) return false;
    }
    if (next < args.size() && args[next].find('=') == std::string::npos) {
        connect->freqs = args[next++];
    }
    for (; next < args.size(); ++next) {
        const size_t equals = args[next].find('=');
        if (equals == std::string::npos) return false;
        recipes::NetworkField field{args[next].substr(0, equals), args[next].substr(equals + 1)};
        if (!recipes::IsConnectField(field.name)) return false;
        if (field.value == "-" && !ReadLine(&field.value)) return false;
        connect->fields.push_back(field);
    }
    return connect->security != Security::kEap || !connect->fields.empty();
}

// The exit status of a connect's outcome, and its line (kUsage).
int OutcomeStatus(const recipes::ConnectResult& result, std::string* line) {
    using recipes::ConnectOutcome;
    switch (result.outcome) {
        case ConnectOutcome::kConnected:
            return 0;
        case ConnectOutcome::kRejectedCredentials:
            *line = "rejected-credentials";
            return 2;
        case ConnectOutcome::kRejectedServerCertificate:
            *line = "rejected-server-certificate reason=" + std::to_string(result.certReason) +
                    " depth=" + std::to_string(result.certDepth);
            return 3;
        case ConnectOutcome::kAsksFor:
            *line = "asks-for " + result.field;
            return 4;
        case ConnectOutcome::kNotFound:
            *line = "not-found";
            return 5;
        case ConnectOutcome::kTimedOut:
            *line = "timed-out";
            return 6;
        case ConnectOutcome::kRejected:
            *line = "rejected";
            return 7;
        case ConnectOutcome::kFailed:
            if (!result.field.empty()) *line = "the supplicant refused " + result.field;
            return kNotDone;
    }
    return kNotDone;
}

void PrintNetworks(const std::vector<recipes::ConfiguredNetwork>& networks) {
    for (const recipes::ConfiguredNetwork& network : networks) {
        printf("%d %s%s %s%s\n", network.id, network.flags.empty() ? "[]" : network.flags.c_str(),
               network.flagsWhole ? "" : "?", network.ssid.c_str(),
               network.ssidWhole ? "" : " [cut]");
    }
}

// Runs the recipe: 0 when done, else an exit status of kUsage with its line in |outcome|.
int Run(WpacliWrapper& client, WpacliWrapper* prompter, const std::string& socket,
        const std::vector<std::string>& args, const ConnectArgs& connect, const Options& options,
        std::string* note, std::string* outcome) {
    const std::string& recipe = args[0];
    const auto arg = [&args](size_t i) { return i < args.size() ? args[i] : std::string(); };
    const auto id = [&arg](size_t i) { return atoi(arg(i).c_str()); };
    bool done = false;
    if (recipe == "scan") {
        done = recipes::Scan(client, arg(1));
    } else if (recipe == "list") {
        done = List(client, socket, options, note);
    } else if (recipe == "connect") {
        recipes::ConnectResult result;
        recipes::Connect(client, connect.ssid, connect.security, connect.passphrase, connect.fields,
                         connect.freqs, &result, 30, prompter);
        const int status = OutcomeStatus(result, outcome);
        if (status != 0) return status;
        done = PrintStatus(client, options);
    } else if (recipe == "status") {
        done = PrintStatus(client, options);
    } else if (recipe == "disconnect") {
        done = recipes::Disconnect(client);
    } else if (recipe == "reconnect") {
        done = recipes::Reconnect(client, nullptr) && PrintStatus(client, options);
    } else if (recipe == "forget") {
        done = recipes::Forget(client);
    } else if (recipe == "roam") {
        if (args.size() > 2 && arg(2) != "ds") return Usage();
        recipes::RoamVia via = recipes::RoamVia::kUnknown;
        done = recipes::Roam(client, arg(1), args.size() > 2, &via) &&
               PrintStatus(client, options, std::string(" via=") + kVias[static_cast<int>(via)]);
    } else if (recipe == "wait-link-loss") {
        int reason = 0;
        done = recipes::WaitForLinkLoss(client, atoi(arg(1).c_str()), &reason);
        if (done) {
            *note = " reason=" + std::to_string(reason);
            if (!options.Quiet()) printf("reason=%d\n", reason);
        }
    } else if (recipe == "networks") {
        std::vector<recipes::ConfiguredNetwork> networks;
        done = recipes::ListConfiguredNetworks(client, &networks);
        *note = " networks=" + std::to_string(networks.size());
        if (done && !options.Quiet()) PrintNetworks(networks);
    } else if (recipe == "enable") {
        done = recipes::EnableNetwork(client, id(1));
    } else if (recipe == "disable") {
        done = recipes::DisableNetwork(client, id(1));
    } else if (recipe == "remove") {
        done = recipes::RemoveNetwork(client, id(1));
    } else if (recipe == "priority") {
        done = recipes::SetPriority(client, id(1), id(2));
    } else if (recipe == "save") {
        done = recipes::SaveConfig(client);
    }
    return done ? 0 : kNotDone;
}

// Whether |text| is a whole decimal number, as ids and priorities must be.
bool IsNumber(const std::string& text) {
    char* end = nullptr;
    strtol(text.c_str(), &end, 10);
    return !text.empty() && *end == '\0';
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
    const std::vector<std::string> run(words.begin() + 1, words.end());
    ConnectArgs connect;
    if (run[0] == "connect" && !ParseConnect(run, &connect)) return Usage();
    if ((run[0] == "enable" || run[0] == "disable" || run[0] == "remove" || run[0] == "priority") &&
        !(IsNumber(run[1]) && (run.size() < 3 || IsNumber(run[2])))) {
        return Usage();
    }
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(words[0]) != 0) {
        fprintf(stderr, "tesmir-recipes: cannot open %s\n", words[0].c_str());
        return kNotDone;
    }
    // The connect's second client, which ends a wait that lost the connection's last events
    // sooner than its 3 s; without one, the wait still ends.
    std::unique_ptr<WpacliWrapper> prompter;
    if (run[0] == "connect") {
        prompter.reset(GetWpacliWrapperHandle());
        if (prompter->Open(words[0]) != 0) prompter.reset();
    }
    const int64_t runs = options.Quiet() ? options.repeat : 1;
    int64_t failed = 0;
    int status = 0;
    for (int64_t i = 1; i <= runs; ++i) {
        std::string note;
        std::string outcome;
        status = Run(*client, prompter.get(), words[0], run, connect, options, &note, &outcome);
        failed += status == 0 ? 0 : 1;
        if (options.Quiet()) {
            printf("run %" PRId64 ": %s%s%s%s\n", i, status == 0 ? "ok" : "failed", note.c_str(),
                   outcome.empty() ? "" : " ", outcome.c_str());
            fflush(stdout);
        } else if (status != 0) {
            fprintf(stderr, "tesmir-recipes: %s did not succeed%s\n", recipe->name, note.c_str());
            if (!outcome.empty()) fprintf(stderr, "%s\n", outcome.c_str());
        }
    }
    if (options.Quiet()) return failed == 0 ? 0 : kNotDone;
    return status;
}
