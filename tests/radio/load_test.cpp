// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The station in a crowd (scripts/radio-lab.sh run -a crowd): 24 BSSes, and a BSS table that
// changes while a host reads it (radio-lab/churn.sh). A listing that meets an entry dropped
// between two queries may end its process by design: under churn the test lists through
// helpers (tesmir-list-helper, TESMIR_LIST_HELPER), as a host that must not end does.

#include <android/log.h>
#include <dirent.h>
#include <errno.h>
#include <string.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "radio_fixture.h"

namespace {

using radio::RadioTest;

constexpr size_t kCrowd = 24;

class CrowdTest : public RadioTest {
  protected:
    void SetUp() override {
        RadioTest::SetUp();
        if (!IsSkipped()) RequireLayout("crowd");
    }

    // The BSSes the supplicant holds, as wpa_cli lists them whole.
    size_t Held() {
        std::istringstream lines(Run("wpa_cli -p " + dir_ + "/ctrl -i wlan0 scan_results"));
        size_t held = 0;
        for (std::string line; std::getline(lines, line);) {
            held += line.rfind("02:00:00:00:", 0) == 0;
        }
        return held;
    }

    void ExpectScanConnectAndRoam() {
        EXPECT_TRUE(recipes::Scan(*client_, "2412,2437,2462"));
        ExpectConnectAndRoam("tesmir", "02:00:00:00:01:00", "02:00:00:00:02:00");
    }
};

TEST_F(CrowdTest, lists_every_bss_held) {
    ASSERT_TRUE(recipes::Scan(*client_, "2412,2437,2462"));
    std::vector<recipes::Bss> found;
    ASSERT_TRUE(recipes::ListNetworks(*client_, &found));
    EXPECT_GE(found.size(), kCrowd);
    EXPECT_EQ(Held(), found.size());
    std::set<std::string> bssids;
    for (size_t i = 0; i < found.size(); ++i) {
        bssids.insert(found[i].bssid);
        if (i > 0) EXPECT_LT(found[i - 1].id, found[i].id);
        EXPECT_TRUE(found[i].ssidWhole);
    }
    EXPECT_EQ(found.size(), bssids.size());
    ExpectScanConnectAndRoam();
}

// What a process holds: its descriptors, and libwpa_client's client sockets in /tmp.
size_t Entries(const char* dir, const char* prefix) {
    size_t count = 0;
    DIR* d = opendir(dir);
    while (const dirent* entry = readdir(d)) {
        count += entry->d_name[0] != '.' && strncmp(entry->d_name, prefix, strlen(prefix)) == 0;
    }
    closedir(d);
    return count;
}

// The host lists through helpers while its other threads allocate, log and drive clients of their
// own: no listing ends it, each is whole or tells why not, and nothing is left behind.
TEST_F(CrowdTest, under_churn_isolated_listings_never_end_the_host_and_leave_nothing) {
    recipes::Isolation isolation;
    isolation.helper = getenv("TESMIR_LIST_HELPER");
    // A bound for a hang, not for speed: under qemu in the lab one listing takes seconds.
    isolation.milliseconds = 60000;
    ASSERT_TRUE(recipes::Scan(*client_, "2412,2437,2462"));
    const size_t fds = Entries("/proc/self/fd", "");
    const size_t sockets = Entries("/tmp", "wpa_ctrl_");
    {
        // On a quiet table the first helper lists it whole, however slow it is (under qemu).
        std::vector<recipes::Bss> found;
        recipes::ListingReport report;
        ASSERT_TRUE(recipes::ListNetworksIsolated(socket_, &found, &report, isolation));
        EXPECT_EQ(Held(), found.size());
        EXPECT_EQ(1, report.helpers);
    }
    std::atomic<bool> busy{true};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        auto client = std::make_shared<std::unique_ptr<WpacliWrapper>>(GetWpacliWrapperHandle());
        ASSERT_EQ(0, (*client)->Open(socket_));  // one Open at a time (WpacliWrapper.h)
        threads.emplace_back([client, &busy, i] {
            std::string reply;
            for (int n = 0; busy; ++n) {
                std::vector<std::string> garbage(64, std::string(100 + n % 500, 'x'));
                __android_log_print(ANDROID_LOG_DEBUG, "tesmir-test", "thread %d round %d", i, n);
                EXPECT_EQ(0, (*client)->Execute("PING", "", reply, false));
            }
        });
    }
    std::thread churn([] { Run(std::string(getenv("TESMIR_LAB_CHURN")) + " edge 20"); });
    int listings = 0;
    int whole = 0;
    bool kept = true;  // a helper from the listing before
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(12);
    // Runs on the lab's real clock: churn.sh sleeps, and simulated time would not pass for it
    // while listings keep the machine busy.
    while (std::chrono::steady_clock::now() < end && listings < 200) {
        std::vector<recipes::Bss> found;
        recipes::ListingReport report;
        const bool listed = recipes::ListNetworksIsolated(socket_, &found, &report, isolation);
        ++listings;
        whole += listed;
        std::set<std::string> bssids;
        for (const recipes::Bss& bss : found) bssids.insert(bss.bssid);
        EXPECT_EQ(found.size(), bssids.size()) << "a BSS listed twice";
        // Every helper that served this listing, kept or started, listed or was ended.
        EXPECT_EQ(report.helpers + (kept ? 1 : 0),
                  report.ended + report.hung + report.failed + (listed ? 1 : 0));
        EXPECT_EQ(report.failed, 0);
        kept = listed;
    }
    busy = false;
    for (std::thread& thread : threads) thread.join();
    churn.join();
    threads.clear();  // closes the threads' clients
    RecordProperty("listings", listings);
    // How many come out whole under churn depends on the helper's speed: the benchmark counts it.
    RecordProperty("whole", whole);
    recipes::EndListingHelpers();
    EXPECT_EQ(fds, Entries("/proc/self/fd", ""));
    EXPECT_EQ(sockets, Entries("/tmp", "wpa_ctrl_"));
    errno = 0;
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
    EXPECT_EQ(ECHILD, errno) << "a helper left unreaped or running";
    ExpectScanConnectAndRoam();
}

}  // namespace
