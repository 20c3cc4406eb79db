// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Times each recipe of recipes/ against the time a raw listener (libwpa_client, attached
// all along) saw the event that the recipe waits for. Runs in the radio lab, on its real clock:
// rounds of scan, connect, roam, disconnect and reconnect on the lab's WPA2 network, the client
// open before the first. Writes "task,round,raw_ms,recipe_ms,quiet_waits,ok" lines, and one
// "exchange,...,median_ms" line: the median of direct-mode PING calls (attach, request, detach).
//   tesmir_recipe_latency ROUNDS       (in scripts/radio-lab.sh: TESMIR_LAB_DIR, ..._SOCKET)

#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <wpa_ctrl.h>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"
#include "listener.h"
#include "quiet_waits.h"

using Clock = std::chrono::steady_clock;

namespace {

constexpr const char* kPsk1 = "02:00:00:00:01:00";
constexpr const char* kPsk2 = "02:00:00:00:02:00";

double Millis(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

struct Task {
    const char* name;
    const char* awaited;  // the event, as the raw listener sees it
    std::function<bool(WpacliWrapper&)> run;
};

}  // namespace

int main(int argc, char** argv) {
    const char* dir = getenv("TESMIR_LAB_DIR");
    const char* socket = getenv("TESMIR_LAB_SOCKET");
    if (argc != 2 || dir == nullptr || socket == nullptr) {
        fprintf(stderr, "usage: in scripts/radio-lab.sh: %s ROUNDS\n", argv[0]);
        return 64;
    }
    const int rounds = atoi(argv[1]);
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    Listener listener(socket, dir);
    if (client->Open(socket) != 0 || !listener.ok()) {
        fprintf(stderr, "recipe latency: cannot open %s\n", socket);
        return 1;
    }
    std::vector<double> exchanges;
    std::string reply;
    for (int i = 0; i < 200; ++i) {
        const Clock::time_point start = Clock::now();
        client->Execute("PING", "", reply, false);
        exchanges.push_back(Millis(Clock::now() - start));
    }
    std::nth_element(exchanges.begin(), exchanges.begin() + 100, exchanges.end());
    printf("exchange,,,%.3f,,\n", exchanges[100]);

    std::string from;
    const Task tasks[] = {
            {"scan", "^<[0-9]>CTRL-EVENT-SCAN-RESULTS ",
             [](WpacliWrapper& c) { return recipes::Scan(c, "2412,2437"); }},
            {"connect", "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ",
             [&from](WpacliWrapper& c) {
                 return recipes::Connect(c, "tesmir", recipes::Security::kWpa2Psk,
                                         "tesmir-passphrase", "2412 2437", &from);
             }},
            {"roam", "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ",
             [&from](WpacliWrapper& c) { return recipes::Roam(c, from == kPsk1 ? kPsk2 : kPsk1); }},
            {"disconnect", "^<[0-9]>CTRL-EVENT-DISCONNECTED ", recipes::Disconnect},
            {"reconnect", "^<[0-9]>CTRL-EVENT-CONNECTED - Connection to ",
             [](WpacliWrapper& c) { return recipes::Reconnect(c, nullptr); }},
    };
    for (int round = 0; round < rounds; ++round) {
        // Every round from a station that holds no network and ignores no access point.
        if (!recipes::Forget(*client) || !recipes::Command(*client, "BSSID_IGNORE clear")) {
            fprintf(stderr, "recipe latency: the station did not reset\n");
            return 1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        for (const Task& task : tasks) {
            ResetQuietWaits();
            const Clock::time_point start = Clock::now();
            const bool ok = task.run(*client);
            const Clock::duration took = Clock::now() - start;
            Clock::time_point seen;
            const bool raw = listener.First(std::regex(task.awaited), start, &seen);
            printf("%s,%d,%.3f,%.3f,%d,%d\n", task.name, round, raw ? Millis(seen - start) : -1.0,
                   Millis(took), QuietWaits(), ok ? 1 : 0);
            fflush(stdout);
            if (!ok) fprintf(stderr, "recipe latency: %s failed in round %d\n", task.name, round);
            if (!ok) break;
        }
    }
    return 0;
}
