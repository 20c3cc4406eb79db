// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The recipes in the radio lab's crowd (scripts/radio-lab.sh run -a crowd: 24 BSSes), on its
// real clock:
//   tesmir_crowd cost ROUNDS
//       a scan of the crowd's three channels, then a listing, ROUNDS times: "scan,ms,quiet_waits"
//       and "list,bsses,library_ms,raw_ms", raw_ms the same queries through libwpa_client alone
//   tesmir_crowd churn edge|flush-all LISTINGS
//       the table changing under the host (radio-lab/churn.sh, started and ended here): LISTINGS
//       listings of each design in turn, each in a child process: by ids as the recipes listed
//       first ("by-id"), by range from the oldest up as they listed in 1.0 ("range"), by
//       position ("position"), newest first as they list now ("newest-first"), and by range
//       asking the last id again before each entry ("rechecked-bound"):
//       "churn,MODE,DESIGN,listings,ended,ms_per_listing"
//   tesmir_crowd isolated edge|flush-all LISTINGS HELPER
//       the same churn, LISTINGS listings through HELPER (ListNetworksIsolated) from this process,
//       a raw listener attached all along: "isolated,MODE,listings,complete,helpers,ended,hung,
//       failed,unannounced,ms_per_listing", unannounced counting (id, BSSID) pairs listed that
//       no CTRL-EVENT-BSS-ADDED announced during the run

#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <wpa_ctrl.h>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"
#include "bench_lab.h"
#include "call_counts.h"
#include "listener.h"

namespace recipes = tesmir::recipes;

using Clock = std::chrono::steady_clock;

namespace {

double Millis(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

int Id(const std::string& reply) {
    const size_t at = reply.find("id=");
    return at == std::string::npos ? -1 : atoi(reply.c_str() + at + 3);
}

// The last id held as a listing begins, found as ListNetworks finds it: -1 when nothing is held,
// -2 when a reply failed.
int LastHeld(WpacliWrapper& client) {
    std::string reply;
    if (!recipes::Command(client, "SCAN_RESULTS", &reply) ||
        reply.find('\n') == std::string::npos) {
        return -1;
    }
    return recipes::Command(client, "BSS LAST MASK=0x1", &reply) ? Id(reply) : -2;
}

// How the recipes listed before: BSS FIRST, then NEXT-<id>, and ID-<id> for flags and SSID. Each
// of these is empty, and ends the process, when the entry it names went away.
bool ListById(WpacliWrapper& client) {
    const int last = LastHeld(client);
    if (last < 0) return last == -1;
    std::string reply;
    for (std::string which = "FIRST";;) {
        if (!recipes::Command(client, "BSS " + which + " MASK=0x87", &reply)) return false;
        const int id = Id(reply);
        const std::string byId = "BSS ID-" + std::to_string(id);
        if (!recipes::Command(client, byId + " MASK=0x800", &reply) ||
            !recipes::Command(client, byId + " MASK=0x1000", &reply)) {
            return false;
        }
        if (id >= last) return true;
        which = "NEXT-" + std::to_string(id);
    }
}

// By position: BSS <n> is the n-th entry in id order, empty only once the table holds n entries
// or fewer. Ends at the position that holds the last id held when it began, or past it.
bool ListByPosition(WpacliWrapper& client) {
    const int last = LastHeld(client);
    if (last < 0) return last == -1;
    std::string reply;
    for (int n = 0;; ++n) {
        int id = -1;
        for (const char* mask : {"0x87", "0x801", "0x401"}) {
            const std::string query = "BSS " + std::to_string(n) + " MASK=" + mask;
            if (!recipes::Command(client, query, &reply)) return false;
            id = Id(reply);
        }
        if (id >= last) return true;
    }
}

// By range from the oldest up, as the recipes listed in 1.0: exposed to the empty reply from its
// BSS LAST until it has read the tail, where churn takes entries. An entry gone between two of
// its queries yields the next one, from which it goes on.
bool ListByRange(WpacliWrapper& client) {
    const int last = LastHeld(client);
    if (last < 0) return last == -1;
    std::string reply;
    for (int next = 0; next <= last;) {
        if (!recipes::Command(client, "BSS RANGE=" + std::to_string(next) + "- MASK=0x87",
                              &reply)) {
            return false;
        }
        const int id = Id(reply);
        next = id + 1;
        for (const char* mask : {"0x801", "0x401"}) {
            const std::string query = "BSS RANGE=" + std::to_string(id) + "- MASK=" + mask;
            if (!recipes::Command(client, query, &reply)) return false;
            if (Id(reply) != id) {
                next = id;
                break;
            }
        }
    }
    return true;
}

// By range, the bound lowered before each entry to the last id still held: BSS LAST is empty
// only when the table is.
bool ListRecheckedBound(WpacliWrapper& client) {
    int last = LastHeld(client);
    if (last < 0) return last == -1;
    std::string reply;
    for (int next = 0;;) {
        if (!recipes::Command(client, "BSS LAST MASK=0x1", &reply)) return false;
        last = std::min(last, Id(reply));
        if (next > last) return true;
        int id = -1;
        for (const char* mask : {"0x87", "0x801", "0x401"}) {
            const std::string query = "BSS RANGE=" + std::to_string(next) + "- MASK=" + mask;
            if (!recipes::Command(client, query, &reply)) return false;
            id = Id(reply);
        }
        next = id + 1;
    }
}

// The commands a listing of |found| sent, as ListNetworks sends them: the ids about ten to a
// reply, then each entry from the newest down.
std::vector<std::string> ListingCommands(const std::vector<recipes::Bss>& found) {
    std::vector<std::string> commands = {"SCAN_RESULTS", "BSS LAST MASK=0x1"};
    for (size_t i = 0; i < found.size(); i += 10) {
        commands.push_back("BSS RANGE=" + std::to_string(i == 0 ? 0 : found[i - 1].id + 1) +
                           "- MASK=0x1");
    }
    for (auto bss = found.rbegin(); bss != found.rend(); ++bss) {
        for (const char* mask : {"0x87", "0x801", "0x401"}) {
            commands.push_back("BSS RANGE=" + std::to_string(bss->id) + "- MASK=" + mask);
        }
    }
    return commands;
}

int Cost(WpacliWrapper& client, const BenchLab& lab, int rounds) {
    RawClient raw(lab);
    if (!raw.ok()) return 1;
    for (int round = 0; round < rounds; ++round) {
        ResetCounts();
        Clock::time_point start = Clock::now();
        const bool scanned = recipes::Scan(client, "2412,2437,2462");
        printf("scan,%.3f,%d\n", Millis(start), Counts().quiet);
        std::vector<recipes::Bss> found;
        start = Clock::now();
        if (!scanned || !recipes::ListNetworks(client, &found)) return 1;
        const double library = Millis(start);
        const std::vector<std::string> commands = ListingCommands(found);
        start = Clock::now();
        for (const std::string& command : commands) raw.Request(command.c_str());
        printf("list,%zu,%.3f,%.3f\n", found.size(), library, Millis(start));
        fflush(stdout);
    }
    return 0;
}

enum Design { kById, kRange, kPosition, kNewestFirst, kRechecked, kDesigns };
const char* const kDesignNames[kDesigns] = {"by-id", "range", "position", "newest-first",
                                            "rechecked-bound"};

// One listing in a child process: whether it ended the process.
bool ListingEnded(const std::string& socket, Design design) {
    const pid_t child = fork();
    if (child == 0) {
        std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
        std::vector<recipes::Bss> found;
        if (client->Open(socket) != 0) _exit(2);
        switch (design) {
            case kById:
                _exit(!ListById(*client));
            case kPosition:
                _exit(!ListByPosition(*client));
            case kRange:
                _exit(!ListByRange(*client));
            case kRechecked:
                _exit(!ListRecheckedBound(*client));
            default:  // newest first
                _exit(!recipes::ListNetworks(*client, &found));
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

// churn.sh MODE in a process group of its own, the table in motion once it returns.
pid_t StartChurn(const char* churnScript, const std::string& mode) {
    const pid_t churn = fork();
    if (churn == 0) {
        setpgid(0, 0);
        execl(churnScript, "churn.sh", mode.c_str(), "100000", nullptr);
        _exit(127);
    }
    sleep(3);
    return churn;
}

void StopChurn(pid_t churn) {
    kill(-churn, SIGTERM);
    waitpid(churn, nullptr, 0);
}

int Churn(const std::string& socket, const char* churnScript, const std::string& mode,
          int listings) {
    const pid_t churn = StartChurn(churnScript, mode);
    int ended[kDesigns] = {};
    double millis[kDesigns] = {};
    for (int i = 0; i < kDesigns * listings; ++i) {
        const auto design = static_cast<Design>(i % kDesigns);
        const Clock::time_point start = Clock::now();
        ended[design] += ListingEnded(socket, design);
        millis[design] += Millis(start);
    }
    StopChurn(churn);
    for (int design = 0; design < kDesigns; ++design) {
        printf("churn,%s,%s,%d,%d,%.1f\n", mode.c_str(), kDesignNames[design], listings,
               ended[design], millis[design] / listings);
    }
    return 0;
}

// The (id, BSSID) pairs that CTRL-EVENT-BSS-ADDED events announce: "<3>CTRL-EVENT-BSS-ADDED 5
// <bssid>".
void Announced(const std::vector<std::string>& events,
               std::set<std::pair<int, std::string>>* pairs) {
    static const std::string kAdded = "CTRL-EVENT-BSS-ADDED ";
    for (const std::string& event : events) {
        const size_t at = event.find(kAdded);
        if (at == std::string::npos) continue;
        const std::string rest = event.substr(at + kAdded.size());
        const size_t space = rest.find(' ');
        if (space != std::string::npos) {
            pairs->emplace(atoi(rest.c_str()), rest.substr(space + 1, 17));
        }
    }
}

int Isolated(WpacliWrapper& client, const BenchLab& lab, const char* churnScript,
             const std::string& mode, int listings, const char* helper) {
    Listener listener(lab.socket, lab.clientDir);
    if (!listener.ok()) return 1;
    // Every entry held from here on is announced while the listener is attached.
    if (!recipes::Command(client, "BSS_FLUSH 0") || !recipes::Scan(client, "2412,2437,2462")) {
        return 1;
    }
    const pid_t churn = StartChurn(churnScript, mode);
    recipes::Isolation isolation;
    isolation.helper = helper;
    std::set<std::pair<int, std::string>> announced;
    size_t seen = 0;
    int complete = 0;
    int unannounced = 0;
    recipes::ListingReport total;
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < listings; ++i) {
        std::vector<recipes::Bss> found;
        recipes::ListingReport report;
        complete += recipes::ListNetworksIsolated(lab.socket, &found, &report, isolation);
        total.helpers += report.helpers;
        total.ended += report.ended;
        total.hung += report.hung;
        total.failed += report.failed;
        Announced(listener.Events(&seen), &announced);
        for (const recipes::Bss& bss : found) {
            unannounced += announced.count({bss.id, bss.bssid}) == 0;
        }
    }
    const double millis = Millis(start);
    StopChurn(churn);
    printf("isolated,%s,%d,%d,%d,%d,%d,%d,%d,%.1f\n", mode.c_str(), listings, complete,
           total.helpers, total.ended, total.hung, total.failed, unannounced, millis / listings);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const char* dir = getenv("TESMIR_LAB_DIR");
    const char* socket = getenv("TESMIR_LAB_SOCKET");
    const char* churnScript = getenv("TESMIR_LAB_CHURN");
    if (argc < 3 || dir == nullptr || socket == nullptr || churnScript == nullptr) {
        fprintf(stderr,
                "usage: in scripts/radio-lab.sh run -a crowd: %s cost ROUNDS | churn "
                "edge|flush-all LISTINGS | isolated edge|flush-all LISTINGS HELPER\n",
                argv[0]);
        return 64;
    }
    const std::string what = argv[1];
    if (what == "churn" && argc == 4) return Churn(socket, churnScript, argv[2], atoi(argv[3]));
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(socket) != 0) return 64;
    const BenchLab lab{socket, dir, "wlan0"};
    if (what == "isolated" && argc == 5) {
        return Isolated(*client, lab, churnScript, argv[2], atoi(argv[3]), argv[4]);
    }
    return what == "cost" ? Cost(*client, lab, atoi(argv[2])) : 64;
}
