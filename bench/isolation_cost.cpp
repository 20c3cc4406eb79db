// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// What isolating a listing costs a host: ROUNDS listings in each design, in turn, from a host of
// 50 MB resident whose eight other threads allocate and log the while. Without SOCKET, of an
// empty table, from a control socket of this process that answers as a supplicant holding
// nothing; with SOCKET, of what that supplicant holds (the radio lab's crowd).
//   tesmir_isolation_cost HELPER ROUNDS [SOCKET]
// Prints "isolation,TABLE,DESIGN,rounds,p50_ms,p95_ms", TABLE "empty" or "held", for
//   in-process  ListNetworks() on a client this host keeps open: the baseline
//   warm        ListNetworksIsolated() answered by the helper it keeps (HELPER)
//   cold        ListNetworksIsolated() after EndListingHelpers(): a helper started for it
//   fork        fork(), a client opened and ListNetworks() in the child; what a multithreaded
//               host may not do safely
//   exec-floor  posix_spawn of /bin/true: what starting any program costs on this machine
// then "isolation-rss,TABLE,helper,KB": the kept helper's resident memory.

#include <android/log.h>
#include <dirent.h>
#include <inttypes.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"

namespace recipes = tesmir::recipes;

namespace {

using Clock = std::chrono::steady_clock;

// Answers ATTACH and DETACH, and SCAN_RESULTS with its header alone: a table with nothing in it.
class EmptySupplicant {
  public:
    explicit EmptySupplicant(const std::string& path) : path_(path) {
        fd_ = socket(AF_UNIX, SOCK_DGRAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        unlink(path.c_str());
        if (bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) abort();
        thread_ = std::thread([this] { Serve(); });
    }
    ~EmptySupplicant() {
        shutdown(fd_, SHUT_RDWR);
        thread_.join();
        close(fd_);
        unlink(path_.c_str());
    }

  private:
    void Serve() const {
        char request[256];
        for (;;) {
            sockaddr_un from = {};
            socklen_t length = sizeof(from);
            const ssize_t n = recvfrom(fd_, request, sizeof(request) - 1, 0,
                                       reinterpret_cast<sockaddr*>(&from), &length);
            if (n <= 0) return;
            request[n] = '\0';
            const char* reply = strcmp(request, "SCAN_RESULTS") == 0
                                        ? "bssid / frequency / signal level / flags / ssid\n"
                                        : "OK\n";
            sendto(fd_, reply, strlen(reply), 0, reinterpret_cast<sockaddr*>(&from), length);
        }
    }
    std::string path_;
    int fd_ = -1;
    std::thread thread_;
};

bool ListForked(const std::string& socket) {
    const pid_t child = fork();
    if (child == 0) {
        std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
        std::vector<recipes::Bss> found;
        _exit(client->Open(socket) == 0 && recipes::ListNetworks(*client, &found) ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool SpawnTrue() {
    char program[] = "/bin/true";
    char* argv[] = {program, nullptr};
    pid_t child = -1;
    int status = 0;
    return posix_spawn(&child, program, nullptr, nullptr, argv, nullptr) == 0 &&
           waitpid(child, &status, 0) == child && status == 0;
}

// The resident memory of this process's serving helper, in kB; 0 when none runs.
int64_t HelperResidentKb() {
    DIR* proc = opendir("/proc");
    int64_t kb = 0;
    while (const dirent* entry = proc != nullptr ? readdir(proc) : nullptr) {
        const std::string dir = std::string("/proc/") + entry->d_name;
        std::ifstream stat(dir + "/stat");
        std::string pid;
        std::string name;
        std::string state;
        std::string parent;
        std::ifstream cmdline(dir + "/cmdline");
        const std::string words((std::istreambuf_iterator<char>(cmdline)),
                                std::istreambuf_iterator<char>());
        if (!(stat >> pid >> name >> state >> parent) || atoi(parent.c_str()) != getpid() ||
            words.find("--serve") == std::string::npos) {
            continue;
        }
        std::ifstream status(dir + "/status");
        for (std::string key; status >> key;) {
            if (key == "VmRSS:") status >> kb;
        }
    }
    if (proc != nullptr) closedir(proc);
    return kb;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        fprintf(stderr, "usage: %s HELPER ROUNDS [SOCKET]\n", argv[0]);
        return 64;
    }
    const int rounds = atoi(argv[2]);
    const char* table = argc == 4 ? "held" : "empty";
    const std::string socket =
            argc == 4 ? argv[3] : "/tmp/tesmir-isolation-" + std::to_string(getpid());
    std::unique_ptr<EmptySupplicant> supplicant;
    if (argc == 3) supplicant = std::make_unique<EmptySupplicant>(socket);
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(socket) != 0) return 1;
    // The host's shape: 50 MB resident, and eight threads at work.
    std::vector<char> resident(50u << 20);
    memset(resident.data(), 1, resident.size());
    std::atomic<bool> busy{true};
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&busy, i] {
            for (int n = 0; busy; ++n) {
                std::vector<std::string> garbage(64, std::string(100 + n % 500, 'x'));
                __android_log_print(ANDROID_LOG_VERBOSE, "tesmir-bench", "thread %d %d", i, n);
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
    }
    recipes::Isolation isolation;
    isolation.helper = argv[1];
    std::vector<recipes::Bss> found;
    recipes::ListingReport report;
    const auto isolated = [&](int started) {
        return recipes::ListNetworksIsolated(socket, &found, &report, isolation) &&
               report.helpers == started;
    };
    // Each design with what it does before its timed part, and the timed part.
    const std::tuple<const char*, std::function<void()>, std::function<bool()>> designs[] = {
            {"in-process", [] {}, [&] { return recipes::ListNetworks(*client, &found); }},
            {"warm", [] {}, [&] { return isolated(0); }},
            {"cold", recipes::EndListingHelpers, [&] { return isolated(1); }},
            {"fork", [] {}, [&] { return ListForked(socket); }},
            {"exec-floor", [] {}, SpawnTrue},
    };
    // The first listing starts the helper the warm rounds use.
    int status = isolated(1) ? 0 : 1;
    std::map<std::string, std::vector<double>> millis;
    for (int round = 0; round < rounds; ++round) {
        for (const auto& [name, before, list] : designs) {
            before();
            const Clock::time_point start = Clock::now();
            if (!list()) status = 1;
            millis[name].push_back(
                    std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        }
    }
    for (const auto& [name, before, list] : designs) {
        std::vector<double>& times = millis[name];
        std::sort(times.begin(), times.end());
        printf("isolation,%s,%s,%d,%.3f,%.3f\n", table, name, rounds, times[times.size() / 2],
               times[times.size() * 95 / 100]);
    }
    printf("isolation-rss,%s,helper,%" PRId64 "\n", table, HelperResidentKb());
    fflush(stdout);
    recipes::EndListingHelpers();
    busy = false;
    for (std::thread& thread : threads) thread.join();
    return status;
}
