// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// ListNetworksIsolated() over stand-in helpers: scripts that list, end, hang or fail as the real
// helper can. The stand-in gets the client socket directory where the real one gets the socket.

#include <dirent.h>
#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "bss_lines.h"
#include "gtest/gtest.h"

namespace recipes = tesmir::recipes;

namespace {

#ifdef __ANDROID__
constexpr const char* kTemporary = "/data/local/tmp/tesmir-isolated-XXXXXX";
constexpr const char* kShell = "#!/system/bin/sh\n";
#else
constexpr const char* kTemporary = "/tmp/tesmir-isolated-XXXXXX";
constexpr const char* kShell = "#!/bin/sh\n";
#endif

class IsolatedListingTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string dir = kTemporary;
        ASSERT_NE(mkdtemp(dir.data()), nullptr);
        dir_ = dir;
        isolation_.clientDir = dir_;
        isolation_.milliseconds = 200;
    }
    void TearDown() override { EXPECT_EQ(system(("rm -rf " + dir_).c_str()), 0); }

    // A helper that runs |script| (sh) with the client socket directory as $1.
    void Helper(const std::string& script) {
        isolation_.helper = dir_ + "/helper";
        std::ofstream(isolation_.helper) << kShell << script << "\n";
        chmod(isolation_.helper.c_str(), 0755);
    }
    bool List() { return recipes::ListNetworksIsolated(dir_, &found_, &report_, isolation_); }

    // What the directory holds, the helper aside: client sockets left behind.
    std::vector<std::string> Left() {
        std::vector<std::string> names;
        DIR* d = opendir(dir_.c_str());
        while (const dirent* entry = readdir(d)) {
            const std::string name = entry->d_name;
            if (name != "." && name != ".." && name != "helper") names.push_back(name);
        }
        closedir(d);
        return names;
    }

    std::string dir_;
    recipes::Isolation isolation_;
    std::vector<recipes::Bss> found_ = {recipes::Bss()};
    recipes::ListingReport report_;
};

recipes::Bss Hostile() {
    recipes::Bss bss;
    bss.id = 12;
    bss.bssid = "02:00:00:00:01:00";
    bss.freq = 2412;
    bss.level = -30;
    bss.ssid = std::string("a b\"\n\xff\0done 1", 13);
    bss.ssidLength = 32;
    return bss;
}

TEST_F(IsolatedListingTest, a_whole_listing_crosses_with_any_ssid_byte) {
    const recipes::Bss one = Hostile();
    recipes::Bss two;
    two.id = 13;
    two.flags = "[ESS]";
    two.ssidWhole = true;
    Helper("printf '%s' '" + recipes::BssLine(one) + recipes::BssLine(two) + "done 2\n'");
    ASSERT_TRUE(List());
    ASSERT_EQ(found_.size(), 2u);
    EXPECT_EQ(found_[0].ssid, one.ssid);
    EXPECT_EQ(found_[0].ssidLength, 32u);
    EXPECT_FALSE(found_[0].ssidWhole);
    EXPECT_EQ(found_[0].bssid, one.bssid);
    EXPECT_EQ(found_[0].level, -30);
    EXPECT_EQ(found_[1].flags, "[ESS]");
    EXPECT_TRUE(found_[1].ssidWhole);
    EXPECT_EQ(report_.helpers, 1);
}

TEST_F(IsolatedListingTest, output_cut_short_or_miscounted_is_no_listing) {
    std::vector<recipes::Bss> found;
    const std::string line = recipes::BssLine(Hostile());
    EXPECT_FALSE(recipes::ParseBssLines(line, &found));
    EXPECT_FALSE(recipes::ParseBssLines(line + "done 2\n", &found));
    EXPECT_FALSE(recipes::ParseBssLines(line.substr(0, 20) + "\ndone 1\n", &found));
    EXPECT_TRUE(recipes::ParseBssLines("done 0\n", &found));
    EXPECT_TRUE(found.empty());
}

// As when the library ends the helper on an empty reply: its client sockets stay behind.
TEST_F(IsolatedListingTest, a_helper_that_ends_is_reaped_its_sockets_removed_and_tried_again) {
    Helper(R"(: >"$1/wpa_ctrl_$$-1"; : >"$1/wpa_ctrl_$$-2"; : >"$1/wpa_ctrl_1-1"; kill -ABRT $$)");
    EXPECT_FALSE(List());
    EXPECT_TRUE(found_.empty());
    EXPECT_EQ(report_.helpers, 3);
    EXPECT_EQ(report_.ended, 3);
    EXPECT_EQ(Left(), std::vector<std::string>{"wpa_ctrl_1-1"});  // another process's stays
    errno = 0;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(IsolatedListingTest, a_helper_that_hangs_is_ended_and_one_that_fails_counted) {
    Helper("exec sleep 30");
    isolation_.attempts = 2;
    EXPECT_FALSE(List());
    EXPECT_EQ(report_.hung, 2);
    Helper("exit 1");
    EXPECT_FALSE(List());
    EXPECT_EQ(report_.failed, 2);
    EXPECT_EQ(report_.startError, 0);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

// A wrong path or a missing permission is told as such, once: trying again cannot mend it.
TEST_F(IsolatedListingTest, a_helper_that_cannot_start_is_told_with_its_path_and_not_retried) {
    isolation_.helper = dir_ + "/absent";
    EXPECT_FALSE(List());
    EXPECT_TRUE(found_.empty());
    EXPECT_EQ(report_.startError, ENOENT);
    EXPECT_EQ(report_.startPath, isolation_.helper);
    EXPECT_EQ(report_.helpers, 1);
    EXPECT_EQ(report_.failed, 1);
    Helper("exit 0");
    chmod(isolation_.helper.c_str(), 0644);
    EXPECT_FALSE(List());
    EXPECT_EQ(report_.startError, EACCES);
    EXPECT_EQ(report_.helpers, 1);
    // As bionic's posix_spawn and the dynamic linker end a child that cannot run.
    Helper("exit 127");
    EXPECT_FALSE(List());
    EXPECT_EQ(report_.startError, ENOEXEC);
    EXPECT_EQ(report_.startPath, isolation_.helper);
    EXPECT_EQ(report_.helpers, 1);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

}  // namespace
