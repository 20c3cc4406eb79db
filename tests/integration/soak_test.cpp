// Long runs against the real supplicant: nothing may grow (descriptors, client socket files,
// memory), and threads with their own clients never see each other's replies. Each test prints
// its figures for docs/RELIABILITY.md.

#include <dirent.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <mutex>
#include <thread>
#include <vector>

#include "lab.h"

namespace {

// Open descriptors, libwpa_client's client socket files of this process, resident KiB.
std::vector<int> Usage() {
    std::vector<int> usage = {0, 0, 0};
    const std::string sockets = "wpa_ctrl_" + std::to_string(getpid()) + "-";
    for (const auto& [dir, prefix, slot] :
         {std::tuple<const char*, std::string, int>("/proc/self/fd", "", 0),
          {"/tmp", sockets, 1}}) {
        DIR* d = opendir(dir);
        while (const dirent* entry = d != nullptr ? readdir(d) : nullptr) {
            usage[slot] += std::string(entry->d_name).rfind(prefix, 0) == 0;
        }
        if (d != nullptr) closedir(d);
    }
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) usage[2] = std::stoi(line.substr(6));
    }
    return usage;
}

TEST_F(SupplicantTest, ten_thousand_calls_and_reopens_leave_nothing_behind) {
    std::string response;
    for (int i = 0; i < 100; ++i) client_->Execute("PING", "", response, false);  // warm up
    const std::vector<int> before = Usage();
    int failures = 0;
    for (int i = 0; i < 2500; ++i) {  // 4 calls each, and a reopen every tenth
        for (int j = 0; j < 2; ++j) {
            failures += client_->Execute("PING", "", response, false) != 0 || response != "PONG";
        }
        failures += client_->Execute("ADD_NETWORK", "ADDED", response, true) != 0 ||
                    response.rfind("<3>CTRL-EVENT-NETWORK-ADDED ", 0) != 0;
        failures += client_->Execute("REMOVE_NETWORK all", "REMOVED", response, true) != 0 ||
                    response.rfind("<3>CTRL-EVENT-NETWORK-REMOVED ", 0) != 0;
        if (i % 10 == 0) failures += client_->Open(SocketPath()) != 0;
    }
    const std::vector<int> after = Usage();
    EXPECT_EQ(0, failures);
    EXPECT_EQ(before[0], after[0]) << "descriptors";
    EXPECT_EQ(before[1], after[1]) << "client socket files";
#if !__has_feature(address_sanitizer)  // its quarantine holds freed memory; LeakSanitizer checks
    EXPECT_LT(after[2] - before[2], 128);  // a leak of 16 bytes a call would be over 150 KiB
#endif
    printf("soak: 10000 Execute calls and 250 reopens, %d failed; descriptors %d -> %d, client "
           "sockets %d -> %d, resident memory %+d KiB\n",
           failures, before[0], after[0], before[1], after[1], after[2] - before[2]);
}

TEST_F(SupplicantTest, eight_threads_with_own_clients_get_their_own_replies) {
    const std::pair<const char*, const char*> cases[] = {
            {"PING", "PONG"}, {"IFNAME", "veth"}, {"NOT_A_COMMAND", "UNKNOWNCOMMAND"}};
    // libwpa_client names client sockets with an unguarded counter: two threads opening at once
    // can make the same name, the second unlinking the first's socket. Hosts serialise Open.
    std::mutex openLock;
    std::atomic<int> calls{0};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    for (size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
            {
                std::lock_guard<std::mutex> lock(openLock);
                wrong += client->Open(SocketPath()) != 0;
            }
            std::string response;
            for (size_t i = t; std::chrono::steady_clock::now() < deadline; ++i, ++calls) {
                const auto& [command, expected] = cases[i % std::size(cases)];
                wrong += client->Execute(command, "", response, false) != 0 || response != expected;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, wrong.load());
    EXPECT_GT(calls.load(), 800);
    printf("threads: 8 clients, %d Execute calls in 3 s, %d wrong or failed\n", calls.load(),
           wrong.load());
}

}  // namespace
