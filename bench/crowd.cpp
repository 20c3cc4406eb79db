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
//       before ("by-id"), by range as they list now ("range"), and by position ("position"):
//       "churn,MODE,DESIGN,listings,ended,ms_per_listing"

#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <wpa_ctrl.h>

#include "WpacliWrapper.h"
#include "bench_lab.h"
#include "quiet_waits.h"
#include "recipes.h"

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

// The commands a listing of |found| sent, as ListNetworks sends them.
std::vector<std::string> ListingCommands(const std::vector<recipes::Bss>& found) {
    std::vector<std::string> commands = {"SCAN_RESULTS", "BSS LAST MASK=0x1"};
    int next = 0;
    for (const recipes::Bss& bss : found) {
        commands.push_back("BSS RANGE=" + std::to_string(next) + "- MASK=0x87");
        for (const char* mask : {"0x801", "0x401"}) {
            commands.push_back("BSS RANGE=" + std::to_string(bss.id) + "- MASK=" + mask);
        }
        next = bss.id + 1;
    }
    return commands;
}

int Cost(WpacliWrapper& client, const BenchLab& lab, int rounds) {
    RawClient raw(lab);
    if (!raw.ok()) return 1;
    for (int round = 0; round < rounds; ++round) {
        ResetQuietWaits();
        Clock::time_point start = Clock::now();
        const bool scanned = recipes::Scan(client, "2412,2437,2462");
        printf("scan,%.3f,%d\n", Millis(start), QuietWaits());
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

enum Design { kById, kRange, kPosition, kDesigns };
const char* const kDesignNames[kDesigns] = {"by-id", "range", "position"};

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
            default:
                _exit(!recipes::ListNetworks(*client, &found));
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

int Churn(const std::string& socket, const char* churnScript, const std::string& mode,
          int listings) {
    const pid_t churn = fork();
    if (churn == 0) {
        setpgid(0, 0);
        execl(churnScript, "churn.sh", mode.c_str(), "100000", nullptr);
        _exit(127);
    }
    sleep(3);  // the table in motion before the first listing
    int ended[kDesigns] = {};
    double millis[kDesigns] = {};
    for (int i = 0; i < kDesigns * listings; ++i) {
        const auto design = static_cast<Design>(i % kDesigns);
        const Clock::time_point start = Clock::now();
        ended[design] += ListingEnded(socket, design);
        millis[design] += Millis(start);
    }
    kill(-churn, SIGTERM);
    waitpid(churn, nullptr, 0);
    for (int design = 0; design < kDesigns; ++design) {
        printf("churn,%s,%s,%d,%d,%.1f\n", mode.c_str(), kDesignNames[design], listings,
               ended[design], millis[design] / listings);
    }
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
                "edge|flush-all LISTINGS\n",
                argv[0]);
        return 64;
    }
    const std::string what = argv[1];
    if (what == "churn" && argc == 4) return Churn(socket, churnScript, argv[2], atoi(argv[3]));
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (what != "cost" || client->Open(socket) != 0) return 64;
    const BenchLab lab{socket, dir, "wlan0"};
    return Cost(*client, lab, atoi(argv[2]));
}
