// Edge cases of sizes, delays and queueing, through the real libwpa_client and real sockets.

#include <stdlib.h>

#include <chrono>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "WpacliWrapper.h"
#include "alloc_counter.h"
#include "scripted_supplicant.h"

using ::testing::ElementsAre;
using Script = ScriptedSupplicant::Script;
using namespace std::chrono_literals;

namespace {

class ScriptedTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char dirTemplate[] = "/tmp/tesmir-scripted.XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(dirTemplate));
        dir_ = dirTemplate;
        supplicant_ = std::make_unique<ScriptedSupplicant>(dir_ + "/wlan0");
        client_.reset(GetWpacliWrapperHandle());
        ASSERT_EQ(0, client_->Open(dir_ + "/wlan0"));
    }

    void TearDown() override {
        client_.reset();
        supplicant_.reset();
        rmdir(dir_.c_str());
    }

    int32_t Execute(const std::string& command, const std::string& pattern, bool wait) {
        return client_->Execute(command, pattern, response_, wait);
    }

    std::string dir_;
    std::unique_ptr<ScriptedSupplicant> supplicant_;
    std::unique_ptr<WpacliWrapper> client_;
    std::string response_ = "untouched";
};

TEST_F(ScriptedTest, every_command_is_wrapped_in_attach_and_detach) {
    supplicant_->On("PING", {"PONG\n", {}, {}});
    ASSERT_EQ(0, Execute("PING", "", false));
    EXPECT_EQ("PONG", response_);
    EXPECT_THAT(supplicant_->Commands(), ElementsAre("ATTACH", "PING", "DETACH"));
}

TEST_F(ScriptedTest, refused_attach_sends_no_command) {
    supplicant_->SetAttachReply("FAIL\n");
    EXPECT_EQ(-1, Execute("PING", "", false));
    EXPECT_EQ("untouched", response_);
    EXPECT_THAT(supplicant_->Commands(), ElementsAre("ATTACH"));
}

TEST_F(ScriptedTest, direct_replies_are_cut_blindly) {
    supplicant_->On("NOLF", {"FAIL", {}, {}});
    supplicant_->On("LONG", {std::string(30, 'a') + " " + std::string(69, 'b') + "\n", {}, {}});
    ASSERT_EQ(0, Execute("NOLF", "", false));
    EXPECT_EQ("FAI", response_);
    ASSERT_EQ(0, Execute("LONG", "", false));
    EXPECT_EQ(std::string(30, 'a') + std::string(32, 'b'), response_);
}

TEST_F(ScriptedTest, queued_events_are_read_before_waiting) {
    supplicant_->On("TRIGGER", {"OK\n", {{0ms, "<3>one"}, {0ms, "<3>two"}, {0ms, "<3>six"}}, {}});
    ASSERT_EQ(0, Execute("TRIGGER", "two", true));
    EXPECT_EQ("<3>two", response_);
    ASSERT_EQ(0, Execute("TRIGGER", "none", true));
    EXPECT_EQ("<3>six", response_);
}

TEST_F(ScriptedTest, receive_length_of_the_first_event_caps_the_next) {
    const std::string first(40, 'a');
    const std::string second = std::string(40, 'b') + std::string(59, 'c') + "Z";
    supplicant_->On("TRIGGER", {"OK\n", {{0ms, first}, {0ms, second}}, {}});
    ASSERT_EQ(0, Execute("TRIGGER", "Z", true));
    EXPECT_EQ(std::string(40, 'b'), response_);
}

TEST_F(ScriptedTest, events_longer_than_512_bytes_are_cut) {
    supplicant_->On("TRIGGER", {"OK\n", {{0ms, "<3>" + std::string(997, 'x')}}, {}});
    ASSERT_EQ(0, Execute("TRIGGER", "x", true));
    EXPECT_EQ("<3>" + std::string(509, 'x'), response_);
}

TEST_F(ScriptedTest, event_two_seconds_later_ends_the_wait) {
    supplicant_->On("SCAN", {"OK\n", {}, {{2000ms, "<3>CTRL-EVENT-SCAN-RESULTS "}}});
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(0, Execute("SCAN", "SCAN-RESULTS", true));
    EXPECT_EQ("<3>CTRL-EVENT-SCAN-RESULTS ", response_);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 1900ms);
}

TEST_F(ScriptedTest, direct_mode_allocates_only_the_response) {
    supplicant_->On("STATUS", {std::string(40, 'x') + " " + std::string(40, 'y') + "\n", {}, {}});
    response_.clear();
    response_.shrink_to_fit();
    uint64_t before = AllocationCount();
    ASSERT_EQ(0, Execute("STATUS", "", false));
    // The response's buffer (63 bytes do not fit the string's inline storage), nothing else.
    EXPECT_EQ(1u, AllocationCount() - before);

    before = AllocationCount();
    ASSERT_EQ(0, Execute("STATUS", "", false));
    EXPECT_EQ(0u, AllocationCount() - before);
    EXPECT_EQ(std::string(40, 'x') + std::string(22, 'y'), response_);
}

TEST_F(ScriptedTest, no_event_in_time_leaves_the_response) {
    supplicant_->On("SCAN", {"OK\n", {}, {{4000ms, "<3>too late"}}});
    EXPECT_EQ(-22, Execute("SCAN", "", true));
    EXPECT_EQ("untouched", response_);
    EXPECT_EQ("DETACH", supplicant_->Commands().back());
}

}  // namespace
