#include <android/log.h>

#include "client_test_base.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class LogTest : public ClientTest {};

TEST_F(LogTest, default_mask_is_0x43) {
    EXPECT_EQ(0x43u, gTesmirLogLevel);
}

TEST_F(LogTest, default_mask_writes_only_the_error_of_a_failing_open) {
    fake::Script().openFails = {true};
    EXPECT_EQ(-1, client_->Open(kPath));
    ASSERT_EQ(1u, fake::Logs().size());
    const fake::LogEntry& entry = fake::Logs()[0];
    EXPECT_EQ(ANDROID_LOG_ERROR, entry.priority);
    EXPECT_EQ("WpacliWrapper", entry.tag);
    EXPECT_EQ("[%s] Unable to get wpa handle for control path: %s\n", entry.format);
    EXPECT_EQ(std::string("[Open] Unable to get wpa handle for control path: ") + kPath + "\n",
              entry.text);

    fake::Logs().clear();
    EXPECT_EQ(0, client_->Open(kPath));
    EXPECT_THAT(LogTexts(), IsEmpty());
}

TEST_F(LogTest, masks_without_error_info_or_trace_bits_write_nothing) {
    for (uint32_t mask : {0x00u, 0x02u, 0x40u, 0x42u, 0xfffffff2u}) {
        SCOPED_TRACE(mask);
        fake::Logs().clear();
        gTesmirLogLevel = mask;
        fake::Script().openFails = {false, true};  // the second connection fails: O3
        EXPECT_EQ(-1, client_->Open(kPath));
        fake::Script().attachResult = -1;
        std::string response;
        EXPECT_EQ(-1, client_->Execute("PING", "", response, false));
        fake::Script().attachResult = 0;
        EXPECT_THAT(LogTexts(), IsEmpty());
    }
}

TEST_F(LogTest, successful_open_with_every_bit_writes_entry_close_info_exit) {
    gTesmirLogLevel = kAllBits;
    EXPECT_EQ(0, client_->Open(kPath));
    EXPECT_THAT(LogShapes(),
                ElementsAre("[Open:N] >>", "[Close:N] >>", "[Close:N] <<",
                            std::string("[Open] ") + kPath + " interface opened\n", "[Open:N] <<"));
    const std::vector<fake::LogEntry>& logs = fake::Logs();
    EXPECT_EQ(ANDROID_LOG_DEBUG, logs[0].priority);
    EXPECT_EQ("[%s:%d] >>", logs[0].format);
    EXPECT_EQ(ANDROID_LOG_DEBUG, logs[2].priority);
    EXPECT_EQ("[%s:%d] <<", logs[2].format);
    EXPECT_EQ(ANDROID_LOG_INFO, logs[3].priority);
    EXPECT_EQ("[%s] %s interface opened\n", logs[3].format);
    EXPECT_EQ(ANDROID_LOG_DEBUG, logs[4].priority);
    for (const fake::LogEntry& entry : logs) EXPECT_EQ("WpacliWrapper", entry.tag);
}

TEST_F(LogTest, failing_opens_close_again_before_the_exit_trace) {
    gTesmirLogLevel = kAllBits;
    fake::Script().openFails = {true};
    EXPECT_EQ(-1, client_->Open(kPath));
    EXPECT_THAT(LogShapes(),
                ElementsAre("[Open:N] >>", "[Close:N] >>", "[Close:N] <<",
                            std::string("[Open] Unable to get wpa handle for control path: ") +
                                    kPath + "\n",
                            "[Close:N] >>", "[Close:N] <<", "[Open:N] <<"));

    fake::Logs().clear();
    fake::Script().openFails = {false, true};
    EXPECT_EQ(-1, client_->Open(kPath));
    EXPECT_THAT(
            LogShapes(),
            ElementsAre("[Open:N] >>", "[Close:N] >>", "[Close:N] <<",
                        std::string("[Open] Unable to get wpa event handle for control path: ") +
                                kPath + "\n",
                        "[Close:N] >>", "[Close:N] <<", "[Open:N] <<"));
    EXPECT_EQ(ANDROID_LOG_ERROR, fake::Logs()[3].priority);
    EXPECT_EQ("[%s] Unable to get wpa event handle for control path: %s\n", fake::Logs()[3].format);
}

TEST_F(LogTest, exit_traces_name_their_own_statement_lines) {
    gTesmirLogLevel = kAllBits;
    ASSERT_EQ(0, client_->Open(kPath));
    const std::string successExit = fake::Logs().back().text;
    const std::string entry = fake::Logs().front().text;
    fake::Logs().clear();
    fake::Script().openFails = {true};
    ASSERT_EQ(-1, client_->Open(kPath));
    const std::string failureExit = fake::Logs().back().text;

    EXPECT_THAT(successExit, ::testing::MatchesRegex(R"(\[Open:[0-9]+\] <<)"));
    EXPECT_THAT(failureExit, ::testing::MatchesRegex(R"(\[Open:[0-9]+\] <<)"));
    EXPECT_NE(successExit, failureExit);
    EXPECT_EQ(entry, fake::Logs().front().text);
}

TEST_F(LogTest, deleting_an_open_client_writes_called_then_close_traces) {
    ASSERT_EQ(0, client_->Open(kPath));
    gTesmirLogLevel = 0x04 | 0x08;
    fake::Logs().clear();
    delete client_;
    client_ = nullptr;
    EXPECT_THAT(LogShapes(),
                ElementsAre("[~WpacliWrapper] Called\n", "[Close:N] >>", "[Close:N] <<"));
    EXPECT_EQ(ANDROID_LOG_INFO, fake::Logs()[0].priority);
    EXPECT_EQ("[%s] Called\n", fake::Logs()[0].format);
}

TEST_F(LogTest, mask_is_read_afresh_at_every_statement) {
    // Switched on mid-call: the exit trace appears without its entry trace.
    gTesmirLogLevel = 0;
    fake::Script().onOpen = [] { gTesmirLogLevel = 0x08; };
    EXPECT_EQ(0, client_->Open(kPath));
    EXPECT_THAT(LogShapes(), ElementsAre("[Open:N] <<"));

    // Switched off mid-call: the entry trace appears without its exit trace.
    fake::Logs().clear();
    gTesmirLogLevel = kAllBits;
    fake::Script().onOpen = [] { gTesmirLogLevel = 0; };
    EXPECT_EQ(0, client_->Open(kPath));
    EXPECT_THAT(LogShapes(), ElementsAre("[Open:N] >>", "[Close:N] >>", "[Close:N] <<"));
}

}  // namespace
