// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// What isolating a listing costs a host, apart from the listing: ROUNDS listings of an empty
// table, from a host of 50 MB resident whose eight other threads allocate and log the while,
// against a control socket of this process that answers as a supplicant holding nothing.
//   tesmir_isolation_cost HELPER ROUNDS
// Prints "isolation,DESIGN,rounds,p50_ms,p95_ms" for
//   in-process  a client opened and ListNetworks() here: the baseline
//   spawn       ListNetworksIsolated(): posix_spawn of HELPER, which does the same
//   fork        fork(), the same in the child; what a multithreaded host may not do safely
//   exec-floor  posix_spawn of /bin/true: what starting any program costs on this machine

#include <android/log.h>
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

bool ListHere(const std::string& socket) {
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    std::vector<recipes::Bss> found;
    return client->Open(socket) == 0 && recipes::ListNetworks(*client, &found) && found.empty();
}

bool ListForked(const std::string& socket) {
    const pid_t child = fork();
    if (child == 0) _exit(ListHere(socket) ? 0 : 1);
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

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: %s HELPER ROUNDS\n", argv[0]);
        return 64;
    }
    const int rounds = atoi(argv[2]);
    const std::string socket = "/tmp/tesmir-isolation-" + std::to_string(getpid());
    EmptySupplicant supplicant(socket);
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
    const std::pair<const char*, std::function<bool()>> designs[] = {
            {"in-process", [&] { return ListHere(socket); }},
            {"spawn",
             [&] {
                 std::vector<recipes::Bss> found;
                 recipes::ListingReport report;
                 return recipes::ListNetworksIsolated(socket, &found, &report, isolation) &&
                        report.helpers == 1;
             }},
            {"fork", [&] { return ListForked(socket); }},
            {"exec-floor", SpawnTrue},
    };
    int status = 0;
    for (const auto& [name, list] : designs) {
        std::vector<double> millis;
        millis.reserve(static_cast<size_t>(rounds));
        for (int round = 0; round < rounds; ++round) {
            const Clock::time_point start = Clock::now();
            if (!list()) status = 1;
            millis.push_back(
                    std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        }
        std::sort(millis.begin(), millis.end());
        printf("isolation,%s,%d,%.3f,%.3f\n", name, rounds, millis[millis.size() / 2],
               millis[millis.size() * 95 / 100]);
        fflush(stdout);
    }
    busy = false;
    for (std::thread& thread : threads) thread.join();
    return status;
}
