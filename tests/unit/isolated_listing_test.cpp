// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// ListNetworksIsolated() over stand-in helpers: scripts that list, end, hang or fail as the real
// helper can, once or serving requests as it does. The stand-in gets the client socket directory
// where the real one gets the socket.

#include <dirent.h>
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
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
    void TearDown() override {
        recipes::EndListingHelpers();
        EXPECT_EQ(system(("rm -rf " + dir_).c_str()), 0);
    }

    // A helper whose listing runs |script| (sh) with the client socket directory as $1: once, or
    // for each request when it serves, holding a client socket as the real one does.
    void Helper(const std::string& script) {
        isolation_.helper = dir_ + "/helper";
        std::ofstream(isolation_.helper) << kShell << "list() {\n"
                                         << script << "\n}\n"
                                         << R"(
if [ "$1" = --serve ]; then
    exec 1>&0
    : >"$2/wpa_ctrl_$$-1"
    while read -r request; do
        if [ "$request" = "list 1" ]; then list "$2"; else echo unsupported; fi
    done
    rm -f "$2/wpa_ctrl_$$-1"
else
    list "$1"
fi
)";
        chmod(isolation_.helper.c_str(), 0755);
    }
    // A listing of one BSS whose flags are the helper's pid.
    void PidHelper() { Helper(R"(printf 'bss 1 - 2412 -30 %s - 0 1\ndone 1\n' $$)"); }
    pid_t Pid() { return found_.size() == 1 ? atoi(found_[0].flags.c_str()) : -1; }
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

// The kept helper lists again; one that ended between listings is replaced, and the host
// survives writing to its end of the channel whether it ignores SIGPIPE or not.
TEST_F(IsolatedListingTest, a_kept_helper_lists_again_and_one_that_ended_is_replaced) {
    PidHelper();
    for (const auto handler : {SIG_DFL, SIG_IGN}) {
        const auto before = signal(SIGPIPE, handler);
        ASSERT_TRUE(List());
        const pid_t first = Pid();
        ASSERT_TRUE(List());
        EXPECT_EQ(report_.helpers, 0);
        EXPECT_EQ(Pid(), first);
        ASSERT_EQ(kill(first, SIGKILL), 0);
        // Ended, not yet reaped: its end of the channel is closed.
        siginfo_t info = {};
        ASSERT_EQ(waitid(P_PID, static_cast<id_t>(first), &info, WEXITED | WNOWAIT), 0);
        ASSERT_TRUE(List());
        EXPECT_EQ(report_.ended, 1);
        EXPECT_EQ(report_.helpers, 1);
        EXPECT_NE(Pid(), first);
        signal(SIGPIPE, before);
    }
}

TEST_F(IsolatedListingTest, a_helper_ended_mid_listing_is_replaced_and_the_listing_whole) {
    Helper(R"(if [ ! -e "$1/once" ]; then : >"$1/once"; printf 'bss 1 - 1 1 - - 0 1\n'; kill -ABRT $$; fi
printf 'bss 2 - 2412 -30 - - 0 1\ndone 1\n')");
    ASSERT_TRUE(List());
    ASSERT_EQ(found_.size(), 1u);
    EXPECT_EQ(found_[0].id, 2);
    EXPECT_EQ(report_.ended, 1);
    EXPECT_EQ(report_.helpers, 2);
}

// One helper serves a socket, whichever thread started it and however many list at once.
TEST_F(IsolatedListingTest, threads_share_the_helper_and_each_gets_a_whole_table) {
    PidHelper();
    std::thread([this] { EXPECT_TRUE(List()); }).join();
    const pid_t first = Pid();
    std::vector<std::thread> threads;
    std::vector<std::vector<recipes::Bss>> found(8);
    std::vector<recipes::ListingReport> reports(8);
    for (size_t i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            EXPECT_TRUE(recipes::ListNetworksIsolated(dir_, &found[i], &reports[i], isolation_));
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (size_t i = 0; i < 8; ++i) {
        ASSERT_EQ(found[i].size(), 1u);
        EXPECT_EQ(atoi(found[i][0].flags.c_str()), first);
        EXPECT_EQ(reports[i].helpers, 0);
    }
}

TEST_F(IsolatedListingTest, ending_the_helpers_frees_their_clients_and_a_listing_starts_anew) {
    PidHelper();
    ASSERT_TRUE(List());
    recipes::EndListingHelpers();
    EXPECT_TRUE(Left().empty());
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    ASSERT_TRUE(List());
    EXPECT_EQ(report_.helpers, 1);
}

// A helper of an earlier version refuses --serve as bad usage: it is run once a listing.
TEST_F(IsolatedListingTest, a_helper_that_cannot_serve_is_run_once_a_listing) {
    isolation_.helper = dir_ + "/helper";
    std::ofstream(isolation_.helper) << kShell << R"([ "$1" = --serve ] && exit 64
printf 'bss 1 - 2412 -30 %s - 0 1\ndone 1\n' $$)";
    chmod(isolation_.helper.c_str(), 0755);
    ASSERT_TRUE(List());
    EXPECT_EQ(report_.helpers, 2);
    const pid_t first = Pid();
    ASSERT_TRUE(List());
    EXPECT_EQ(report_.helpers, 1);
    EXPECT_NE(Pid(), first);
}

// Its end of the channel closed with the host, the helper ends and removes its client socket.
TEST_F(IsolatedListingTest, a_host_killed_leaves_no_helper_and_no_client_socket) {
    PidHelper();
    int report[2];
    ASSERT_EQ(pipe(report), 0);
    const pid_t host = fork();
    ASSERT_GE(host, 0);
    if (host == 0) {
        const pid_t helper = List() ? Pid() : -1;
        // Another child of the host, which must not hold the helper's channel.
        (void)!system("sleep 5 </dev/null >/dev/null 2>&1 &");
        (void)!write(report[1], &helper, sizeof(helper));
        pause();
        _exit(0);
    }
    pid_t helper = -1;
    ASSERT_EQ(read(report[0], &helper, sizeof(helper)), static_cast<ssize_t>(sizeof(helper)));
    ASSERT_GT(helper, 0);
    EXPECT_EQ(Left().size(), 1u);
    kill(host, SIGKILL);
    waitpid(host, nullptr, 0);
    // Gone, or a zombie waiting for the reaper it was handed to.
    const auto ended = [helper] {
        std::ifstream stat("/proc/" + std::to_string(helper) + "/stat");
        std::string pid;
        std::string name;
        std::string state;
        return !(stat >> pid >> name >> state) || state == "Z";
    };
    for (int i = 0; i < 200 && !(Left().empty() && ended()); ++i) usleep(10000);
    EXPECT_TRUE(Left().empty());
    EXPECT_TRUE(ended());
    close(report[0]);
    close(report[1]);
}

}  // namespace
