// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "client_test_base.h"

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// Read while the test program loads, before any fixture sets the mask.
const uint32_t kMaskAtLoad = gTesmirLogLevel;

TEST(log, mask_starts_at_0x43) {
    EXPECT_EQ(0x43u, kMaskAtLoad);
}

class LifecycleTest : public ClientTest {
  protected:
    const std::string path_ = kPath;
};

TEST_F(LifecycleTest, open_reopen_and_delete_with_every_bit) {
    gTesmirLogLevel = kAllBits;
    ASSERT_EQ(0, client_->Open(kPath));
    EXPECT_THAT(Take(), ElementsAre("D [Open:N] >>", "D [Close:N] >>", "D [Close:N] <<",
                                    "open " + path_ + " -> 1", "open " + path_ + " -> 2",
                                    "I [Open] " + path_ + " interface opened\n", "D [Open:N] <<"));
    ASSERT_EQ(0, client_->Open("/other\0cut"s));
    EXPECT_THAT(Take(), ElementsAre("D [Open:N] >>", "D [Close:N] >>", "close 1", "close 2",
                                    "D [Close:N] <<", "open /other -> 3", "open /other -> 4",
                                    "I [Open] /other interface opened\n", "D [Open:N] <<"));
    delete client_;
    client_ = GetWpacliWrapperHandle();
    client_->Close();
    EXPECT_THAT(Take(),
                ElementsAre("I [~WpacliWrapper] Called\n", "D [Close:N] >>", "close 3", "close 4",
                            "D [Close:N] <<", "D [Close:N] >>", "D [Close:N] <<"));
}

TEST_F(LifecycleTest, failed_open_leaves_the_client_closed) {
    gTesmirLogLevel = kAllBits;
    // NOLINTNEXTLINE(readability-isolate-declaration): the pieces of the transcripts below
    const std::string in = "D [Open:N] >>", out = "D [Open:N] <<", closeIn = "D [Close:N] >>",
                      closeOut = "D [Close:N] <<", open = "open " + path_ + " -> ";
    const std::string noCommand = "E [Open] Unable to get wpa handle for control path: " + path_;
    const std::string noEvent =
            "E [Open] Unable to get wpa event handle for control path: " + path_;
    const std::deque<bool> openFails[] = {{true}, {false, true}, {true}};
    const std::vector<std::string> transcripts[] = {
            {in, closeIn, closeOut, open + "null", noCommand + "\n", closeIn, closeOut, out},
            {in, closeIn, closeOut, open + "1", open + "null", noEvent + "\n", closeIn, "close 1",
             closeOut, out},
            // Reopening an open client closes the old connections first.
            {in, closeIn, "close 1", "close 2", closeOut, open + "null", noCommand + "\n", closeIn,
             closeOut, out},
    };
    for (size_t i = 0; i < std::size(transcripts); ++i) {
        fake::Reset();
        if (i == 2) OpenClient();
        fake::GetScript().openFails = openFails[i];
        EXPECT_EQ(-1, client_->Open(kPath));
        EXPECT_EQ(transcripts[i], Take());
    }
}

TEST_F(LifecycleTest, masks_without_the_bit_of_a_message_do_not_write_it) {
    for (uint32_t mask : {0x00u, 0x02u, 0x40u, 0x42u, 0xfffffff2u}) {
        SCOPED_TRACE(mask);
        gTesmirLogLevel = mask;
        fake::GetScript().openFails = {false, true};
        EXPECT_EQ(-1, client_->Open(kPath));
        fake::GetScript().attachResult = -1;
        std::string response;
        EXPECT_EQ(-1, client_->Execute("PING", "", response, false));
        fake::GetScript().attachResult = 0;
        EXPECT_THAT(Take("L"), IsEmpty());
    }
}

TEST_F(LifecycleTest, mask_is_read_afresh_at_every_statement) {
    // Switched on mid-call: the exit trace appears without its entry trace; and the reverse.
    gTesmirLogLevel = 0;
    fake::GetScript().onOpen = [] { gTesmirLogLevel = 0x08; };
    EXPECT_EQ(0, client_->Open(kPath));
    EXPECT_THAT(Take("L"), ElementsAre("D [Open:N] <<"));
    gTesmirLogLevel = kAllBits;
    fake::GetScript().onOpen = [] { gTesmirLogLevel = 0; };
    EXPECT_EQ(0, client_->Open(kPath));
    EXPECT_THAT(Take("L"), ElementsAre("D [Open:N] >>", "D [Close:N] >>", "D [Close:N] <<"));
}

TEST_F(LifecycleTest, success_and_failure_exits_print_their_own_lines) {
    gTesmirLogLevel = 0x08;
    fake::GetScript().lineNumbers = true;
    fake::GetScript().openFails = {false, false, true};
    ASSERT_EQ(0, client_->Open(kPath));
    ASSERT_EQ(-1, client_->Open(kPath));
    const std::vector<std::string> logs = Take("L");  // the success exit is the fourth line
    EXPECT_THAT(logs[3], ::testing::MatchesRegex(R"(D \[Open:[0-9]+\] <<)"));
    EXPECT_NE(logs[3], logs.back());
}

class CountingClose : public WpacliWrapper {
  public:
    explicit CountingClose(int* closes) : closes_(closes) {}
    void Close() override {
        ++*closes_;
        WpacliWrapper::Close();
    }

  private:
    int* closes_;
};

TEST_F(LifecycleTest, open_calls_a_derived_close_but_destruction_calls_its_own) {
    int closes = 0;
    WpacliWrapper* derived = new CountingClose(&closes);
    fake::GetScript().openFails = {true};
    EXPECT_EQ(-1, derived->Open(kPath));
    EXPECT_EQ(2, closes);  // at the start and on the failure path
    ASSERT_EQ(0, derived->Open(kPath));
    delete derived;
    EXPECT_EQ(3, closes);
    EXPECT_EQ(0, fake::OpenConnections());
}

}  // namespace
