// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Times each recipe of recipes/ against the time a raw listener (libwpa_client, attached all
// along) saw the event that the recipe waits for. Runs in the radio lab, on its real clock, in
// rounds of every waiting task on the lab's networks (in its roaming layout: a PEAP connect, and
// roams by FT-PSK and by a PSK network's full handshake, each telling how), done two ways in turn:
// "open", through a client opened once, and "process", as a script runs them, by tesmir-recipes in
// a process of its own, timed from its start to its end. Link loss is timed from the access point
// going away. Writes "way,task,round,raw_ms,answered_ms,recipe_ms,quiet,queries,events,ok" lines:
// when the listener saw the event, when a PING it sent at once was answered (the earliest a client
// that must then make one exchange could know), when the recipe knew, and the counts of
// call_counts.h. And one "exchange,...,median_ms" line: the median of direct-mode PING calls.
//   tesmir_recipe_latency ROUNDS TOOL COUNTS_LIB     (in scripts/radio-lab.sh)
// TOOL is tesmir-recipes; COUNTS_LIB, libtesmir_call_counts.so, is preloaded into it.

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <wpa_ctrl.h>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"
#include "call_counts.h"
#include "listener.h"

namespace recipes = tesmir::recipes;

using Clock = std::chrono::steady_clock;

namespace {

constexpr const char* kPsk1 = "02:00:00:00:01:00";
constexpr const char* kPsk2 = "02:00:00:00:02:00";
// The pairs of access points a roam goes between: the standard layout's and the roaming
// layout's FT-PSK pair on channels 1 and 6, and its PSK pair on channel 11.
constexpr std::pair<const char*, const char*> kPairs[] = {
        {kPsk1, kPsk2}, {"02:00:00:00:03:01", "02:00:00:00:04:01"}};
constexpr const char* kConnected = "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ";
constexpr const char* kDisconnected = "^<[0-9]>CTRL-EVENT-DISCONNECTED ";

double Millis(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

struct Lab {
    std::string dir;
    std::string socket;
    std::string tool;
    std::string countsLib;
    std::string countsFile;
};

// A task: what it runs in this process, and the same through tesmir-recipes.
struct Task {
    const char* name;
    const char* awaited;  // the event, as the raw listener sees it
    std::function<bool(WpacliWrapper&)> run;
    std::function<std::vector<std::string>()> args;
    bool linkLoss = false;
};

struct Run {
    bool ok = false;
    Clock::time_point end;
    CallCounts counts;
};

// tesmir-recipes with |args|, the counting stand-in preloaded; what it prints is dropped.
pid_t Spawn(const Lab& lab, const std::vector<std::string>& args) {
    std::vector<std::string> words = {lab.tool, lab.socket};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    std::vector<std::string> env = {"LD_PRELOAD=" + lab.countsLib,
                                    "TESMIR_COUNTS_OUT=" + lab.countsFile};
    for (char** e = environ; *e != nullptr; ++e) env.emplace_back(*e);
    std::vector<char*> envp;
    envp.reserve(env.size() + 1);
    for (std::string& e : env) envp.push_back(e.data());
    envp.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    if (posix_spawn(&pid, lab.tool.c_str(), &actions, nullptr, argv.data(), envp.data()) != 0) {
        pid = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

Run Finish(const Lab& lab, pid_t pid) {
    Run run;
    int status = 0;
    run.ok = pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) &&
             WEXITSTATUS(status) == 0;
    run.end = Clock::now();
    FILE* file = fopen(lab.countsFile.c_str(), "r");
    if (file != nullptr) {
        if (fscanf(file, "%d %d %d", &run.counts.quiet, &run.counts.queries, &run.counts.events) !=
            3) {
            run.counts = CallCounts();
        }
        fclose(file);
    }
    unlink(lab.countsFile.c_str());
    return run;
}

// A raw request on a connection of its own, never attached: the benchmark's own business, which
// leaves no event queued for the client under test.
std::string Ask(const std::string& socket, const std::string& dir, const std::string& command) {
    wpa_ctrl* ctrl = wpa_ctrl_open2(socket.c_str(), dir.c_str());
    if (ctrl == nullptr) return "";
    char reply[4096];
    size_t length = sizeof(reply);
    const int status =
            wpa_ctrl_request(ctrl, command.c_str(), command.size(), reply, &length, nullptr);
    wpa_ctrl_close(ctrl);
    return status == 0 ? std::string(reply, length) : "";
}

// Sends |command| to hostapd's control socket of |ap| (wlan1 ...).
bool Hostapd(const Lab& lab, const std::string& ap, const std::string& command) {
    return Ask(lab.dir + "/hostapd/" + ap, lab.dir, command).rfind("OK", 0) == 0;
}

// The BSSID the station is connected to, "" when none; STATUS-NO_EVENTS sends no event.
std::string Bssid(const Lab& lab) {
    const std::string status = Ask(lab.socket, lab.dir, "STATUS-NO_EVENTS");
    return status.rfind("bssid=", 0) == 0 ? status.substr(6, 17) : "";
}

// Until the station is connected again (it finds the network's other access point by itself).
bool Reconnected(const Lab& lab) {
    for (int i = 0; i < 300; ++i) {
        if (!Bssid(lab).empty()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const char* dir = getenv("TESMIR_LAB_DIR");
    const char* socket = getenv("TESMIR_LAB_SOCKET");
    if (argc != 4 || dir == nullptr || socket == nullptr) {
        fprintf(stderr, "usage: in scripts/radio-lab.sh: %s ROUNDS TOOL COUNTS_LIB\n", argv[0]);
        return 64;
    }
    const int rounds = atoi(argv[1]);
    const Lab lab = {dir, socket, argv[2], argv[3], std::string(dir) + "/counts"};
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    std::unique_ptr<WpacliWrapper> prompter(GetWpacliWrapperHandle());
    Listener listener(socket, dir);
    if (client->Open(socket) != 0 || prompter->Open(socket) != 0 || !listener.ok()) {
        fprintf(stderr, "recipe latency: cannot open %s\n", socket);
        return 1;
    }
    CountCalls();
    std::vector<double> exchanges;
    std::string reply;
    for (int i = 0; i < 200; ++i) {
        const Clock::time_point start = Clock::now();
        client->Execute("PING", "", reply, false);
        exchanges.push_back(Millis(Clock::now() - start));
    }
    std::nth_element(exchanges.begin(), exchanges.begin() + 100, exchanges.end());
    printf("exchange,,,,,%.3f,,,,\n", exchanges[100]);

    // The other access point of the pair the station is on.
    const auto other = [&lab] {
        const std::string now = Bssid(lab);
        for (const auto& [a, b] : kPairs) {
            if (now == a) return std::string(b);
            if (now == b) return std::string(a);
        }
        return std::string(kPsk1);
    };
    const auto connect = [](const char* ssid, recipes::Security security, const char* freqs) {
        return [=](WpacliWrapper& c) {
            std::string bssid;
            return recipes::Connect(c, ssid, security, "tesmir-passphrase", freqs, &bssid);
        };
    };
    std::string roamTo;
    const auto roam = [&roamTo](WpacliWrapper& c) {
        recipes::RoamVia via;
        return recipes::Roam(c, roamTo, false, &via);
    };
    const auto roamArgs = [&roamTo] { return std::vector<std::string>{"roam", roamTo}; };
    const char* aps = getenv("TESMIR_LAB_APS");
    const char* certs = getenv("TESMIR_LAB_CERTS");
    const std::string caCert =
            std::string("ca_cert=") + (certs != nullptr ? certs : "") + "/ca.pem";
    const std::vector<std::string> peap = {"eap=PEAP", "identity=tesmir-user",
                                           "password=tesmir-password", "phase2=auth=MSCHAPV2",
                                           caCert};
    // The roaming layout: an 802.1X connect, and FT-PSK roams beside a PSK network's full ones.
    const Task roamingTasks[] = {
            {"connect-peap", kConnected,
             [&peap, &prompter](WpacliWrapper& c) {
                 std::vector<recipes::NetworkField> fields;
                 for (const std::string& field : peap) {
                     const size_t equals = field.find('=');
                     fields.push_back({field.substr(0, equals), field.substr(equals + 1)});
                 }
                 recipes::ConnectResult result;
                 return recipes::Connect(c, "tesmir-eap", recipes::Security::kEap, "", fields,
                                         "2412 2437", &result, 30, prompter.get());
             },
             [&peap] {
                 std::vector<std::string> args = {"connect", "tesmir-eap", "eap", "2412 2437"};
                 args.insert(args.end(), peap.begin(), peap.end());
                 return args;
             }},
            {"connect-ft", kConnected,
             [&prompter](WpacliWrapper& c) {
                 recipes::ConnectResult result;
                 return recipes::Connect(c, "tesmir-ft", recipes::Security::kWpa2Psk,
                                         "tesmir-passphrase", {{"key_mgmt", "FT-PSK"}}, "2412 2437",
                                         &result, 30, prompter.get());
             },
             [] {
                 return std::vector<std::string>{"connect",   "tesmir-ft",
                                                 "psk",       "tesmir-passphrase",
                                                 "2412 2437", "key_mgmt=FT-PSK"};
             }},
            {"roam-ft", kConnected, roam, roamArgs},
            {"connect-psk", kConnected, connect("tesmir-psk", recipes::Security::kWpa2Psk, "2462"),
             [] {
                 return std::vector<std::string>{"connect", "tesmir-psk", "psk",
                                                 "tesmir-passphrase", "2462"};
             }},
            {"roam-full", kConnected, roam, roamArgs},
    };
    const Task standardTasks[] = {
            {"scan", "^<[0-9]>CTRL-EVENT-SCAN-RESULTS ",
             [](WpacliWrapper& c) { return recipes::Scan(c, "2412,2437"); },
             [] {
                 return std::vector<std::string>{"scan", "2412,2437"};
             }},
            {"connect-sae", kConnected, connect("tesmir-sae", recipes::Security::kWpa3Sae, "2462"),
             [] {
                 return std::vector<std::string>{"connect", "tesmir-sae", "sae",
                                                 "tesmir-passphrase", "2462"};
             }},
            {"connect-open", kConnected, connect("tesmir-open", recipes::Security::kOpen, "2462"),
             [] {
                 return std::vector<std::string>{"connect", "tesmir-open", "open", "2462"};
             }},
            {"connect", kConnected, connect("tesmir", recipes::Security::kWpa2Psk, "2412 2437"),
             [] {
                 return std::vector<std::string>{"connect", "tesmir", "psk", "tesmir-passphrase",
                                                 "2412 2437"};
             }},
            {"roam", kConnected, roam, roamArgs},
            {"disconnect", kDisconnected, recipes::Disconnect,
             [] { return std::vector<std::string>{"disconnect"}; }},
            {"reconnect", kConnected,
             [](WpacliWrapper& c) { return recipes::Reconnect(c, nullptr); },
             [] { return std::vector<std::string>{"reconnect"}; }},
            {"link-loss", kDisconnected,
             [](WpacliWrapper& c) {
                 int reason = 0;
                 return recipes::WaitForLinkLoss(c, 10, &reason);
             },
             [] {
                 return std::vector<std::string>{"wait-link-loss", "10"};
             },
             true},
    };
    const bool roaming = aps != nullptr && strcmp(aps, "roaming") == 0;
    const Task* const tasks = roaming ? roamingTasks : standardTasks;
    const size_t taskCount = roaming ? std::size(roamingTasks) : std::size(standardTasks);
    for (int round = 0; round < rounds; ++round) {
        for (const char* way : {"open", "process"}) {
            const bool inProcess = way[0] == 'o';
            // Every round from a station that holds no network and ignores no access point.
            if (Ask(socket, dir, "REMOVE_NETWORK all") != "OK\n" ||
                Ask(socket, dir, "BSSID_IGNORE clear") != "OK\n") {
                fprintf(stderr, "recipe latency: the station did not reset\n");
                return 1;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            for (const Task* next = tasks; next != tasks + taskCount; ++next) {
                const Task& task = *next;
                roamTo = other();
                std::string ap;
                if (task.linkLoss) ap = roamTo == kPsk1 ? "wlan2" : "wlan1";
                ResetCounts();
                listener.Probe(std::regex(task.awaited));
                Clock::time_point start = Clock::now();
                Run run;
                if (inProcess) {
                    std::thread waiting([&] {
                        run.ok = task.run(*client);
                        run.end = Clock::now();
                    });
                    if (task.linkLoss) {
                        std::this_thread::sleep_for(std::chrono::milliseconds(300));
                        start = Clock::now();
                        Hostapd(lab, ap, "DISABLE");
                    }
                    waiting.join();
                    run.counts = Counts();
                } else {
                    const pid_t pid = Spawn(lab, task.args());
                    if (task.linkLoss) {
                        std::this_thread::sleep_for(std::chrono::milliseconds(300));
                        start = Clock::now();
                        Hostapd(lab, ap, "DISABLE");
                    }
                    run = Finish(lab, pid);
                }
                if (task.linkLoss && (!Hostapd(lab, ap, "ENABLE") || !Reconnected(lab))) {
                    fprintf(stderr, "recipe latency: %s did not come back\n", ap.c_str());
                    return 1;
                }
                Clock::time_point seen;
                Clock::time_point answered;
                const bool raw = listener.First(std::regex(task.awaited), start, &seen);
                const bool probed = listener.Answered(&answered);
                printf("%s,%s,%d,%.3f,%.3f,%.3f,%d,%d,%d,%d\n", way, task.name, round,
                       raw ? Millis(seen - start) : -1.0, probed ? Millis(answered - start) : -1.0,
                       Millis(run.end - start), run.counts.quiet, run.counts.queries,
                       run.counts.events, run.ok ? 1 : 0);
                fflush(stdout);
                if (!run.ok) {
                    fprintf(stderr, "recipe latency: %s (%s) failed in round %d\n", task.name, way,
                            round);
                    break;
                }
            }
        }
    }
    return 0;
}
