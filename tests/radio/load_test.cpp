// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The station in a crowd (scripts/radio-lab.sh run -a crowd): 24 BSSes, and a BSS table that
// changes while a host reads it (radio-lab/churn.sh). A listing that meets an entry dropped
// between two queries may end its process by design: under churn each one runs in a child,
// tesmir-recipes (TESMIR_RECIPES), so that such an end is counted and does not end the suite.

#include <sys/wait.h>

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

TEST_F(CrowdTest, under_churn_a_listing_holds_what_it_read_or_ends) {
    const char* recipesTool = getenv("TESMIR_RECIPES");
    ASSERT_NE(nullptr, recipesTool);
    ASSERT_TRUE(recipes::Scan(*client_, "2412,2437,2462"));
    std::thread churn([] { Run(std::string(getenv("TESMIR_LAB_CHURN")) + " edge 20"); });
    int listed = 0;
    int ended = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(12);
    // Runs on the lab's real clock: churn.sh sleeps, and simulated time would not pass for it
    // while listings keep the machine busy.
    while (std::chrono::steady_clock::now() < end && listed + ended < 200) {
        FILE* child = popen((std::string(recipesTool) + " " + socket_ + " list").c_str(), "r");
        ASSERT_NE(nullptr, child);
        std::set<std::string> bssids;
        size_t lines = 0;
        char line[256];
        while (fgets(line, sizeof(line), child) != nullptr) {
            bssids.insert(std::string(line).substr(0, 17));
            ++lines;
        }
        const int status = pclose(child);
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
            ++listed;
            EXPECT_EQ(lines, bssids.size()) << "a BSS listed twice";
        } else {
            // Ended by the empty reply, in the one case no order of reads avoids.
            EXPECT_TRUE(WIFSIGNALED(status) || (WIFEXITED(status) && WEXITSTATUS(status) > 128))
                    << "status " << status;
            ++ended;
        }
    }
    RecordProperty("listings", listed + ended);
    RecordProperty("ended", ended);
    EXPECT_GT(listed, 0);
    ExpectScanConnectAndRoam();
    churn.join();
}

}  // namespace
