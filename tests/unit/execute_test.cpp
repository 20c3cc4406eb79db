#include <android/log.h>

#include "client_test_base.h"
#include "death.h"

using fake::Op;
using namespace std::string_literals;
using ::testing::ElementsAre;

namespace {

class ExecuteTest : public ClientTest {
  protected:
    void SetUp() override {
        ClientTest::SetUp();
        OpenClient();
    }

    // Runs a direct-mode command against the scripted reply; returns the response.
    std::string Direct(const std::string& reply, std::optional<size_t> replyLen = std::nullopt) {
        fake::Script().reply = reply;
        fake::Script().replyLen = replyLen;
        std::string response = "untouched";
        EXPECT_EQ(0, client_->Execute("STATUS", "ignored", response, false));
        return response;
    }
};

TEST_F(ExecuteTest, direct_reply_loses_its_last_byte_blindly) {
    EXPECT_EQ("OK", Direct("OK\n"));
    EXPECT_EQ("FAI", Direct("FAIL"));
    EXPECT_EQ("", Direct("\n"));
}

TEST_F(ExecuteTest, direct_reply_loses_every_space_and_nothing_else) {
    EXPECT_EQ("abc", Direct("a b c\n"));
    EXPECT_EQ("a\tb\rc", Direct(" a\t b\r c \n"));
}

TEST_F(ExecuteTest, direct_reply_is_cut_to_63_bytes) {
    const std::string reply = "wpa_state=COMPLETED ssid=xyz " + std::string(40, 'x');
    ASSERT_GT(reply.size(), 64u);
    std::string expected = reply.substr(0, 63);
    expected.erase(std::remove(expected.begin(), expected.end(), ' '), expected.end());
    EXPECT_EQ(expected, Direct(reply));
    EXPECT_EQ(64u, fake::Calls()[1].length);  // the whole buffer was offered
}

TEST_F(ExecuteTest, direct_reply_ends_at_its_own_nul) {
    EXPECT_EQ("ab", Direct(std::string("a b\0c d\n", 8)));
}

TEST_F(ExecuteTest, direct_reply_is_logged_before_the_cut_length) {
    gTesmirLogLevel = kAllBits;
    EXPECT_EQ("OK", Direct("OK\n"));
    EXPECT_THAT(LogShapes(), ElementsAre("[Execute:N] >>", "[Execute] Executing Command: STATUS\n",
                                         "Sync Response (len-3): OK", "[Execute:N] <<"));
    EXPECT_EQ(ANDROID_LOG_INFO, fake::Logs()[1].priority);
    EXPECT_EQ("[%s] Executing Command: %s\n", fake::Logs()[1].format);
    EXPECT_EQ(ANDROID_LOG_DEBUG, fake::Logs()[2].priority);
    EXPECT_EQ("Sync Response (len-%lu): %s", fake::Logs()[2].format);
}

TEST_F(ExecuteTest, command_is_sent_whole_with_its_length) {
    const std::string command = "SET_NETWORK 0 ssid \"a\0b\""s;
    std::string response;
    EXPECT_EQ(0, client_->Execute(command, "", response, false));
    EXPECT_EQ(command, fake::Calls()[1].text);
}

TEST_F(ExecuteTest, attach_failure_sends_nothing_and_skips_detach_and_exit_trace) {
    gTesmirLogLevel = kAllBits;
    fake::Script().attachResult = -3;
    std::string response = "earlier";
    EXPECT_EQ(-1, client_->Execute("PING", "", response, false));
    EXPECT_EQ("earlier", response);
    EXPECT_THAT(fake::Ops(), ElementsAre(Op::kAttach));
    EXPECT_THAT(LogShapes(),
                ElementsAre("[Execute:N] >>",
                            "[Execute] Unable to attach wpa handle for recieving events.\n"));
    EXPECT_EQ(ANDROID_LOG_ERROR, fake::Logs()[1].priority);
}

TEST_F(ExecuteTest, request_failure_is_passed_on_after_detach) {
    gTesmirLogLevel = kAllBits;
    fake::Script().requestResult = -2;
    std::string response = "earlier";
    EXPECT_EQ(-2, client_->Execute("PING", "", response, false));
    EXPECT_EQ("earlier", response);
    EXPECT_THAT(fake::Ops(), ElementsAre(Op::kAttach, Op::kRequest, Op::kDetach));
    EXPECT_THAT(LogShapes(), ElementsAre("[Execute:N] >>", "[Execute] Executing Command: PING\n",
                                         "[Execute] Unable to request command execution or "
                                         "Invalid command.(Error: -2)\n",
                                         "[Execute:N] <<"));
    EXPECT_EQ(ANDROID_LOG_ERROR, fake::Logs()[2].priority);
}

TEST_F(ExecuteTest, waiting_mode_returns_the_event_untouched) {
    fake::Script().reply = "0\n";
    const std::string event = "<3>CTRL-EVENT-NETWORK-ADDED 0\n";
    fake::SendEvent(event);
    std::string response;
    EXPECT_EQ(0, client_->Execute("ADD_NETWORK", "NETWORK-ADDED", response, true));
    EXPECT_EQ(event, response);
    EXPECT_THAT(fake::Ops(),
                ElementsAre(Op::kAttach, Op::kRequest, Op::kGetFd, Op::kRecv, Op::kDetach));
    for (size_t i : {0, 2, 3, 4}) EXPECT_EQ(2, fake::Calls()[i].conn);
}

TEST_F(ExecuteTest, waiting_mode_failure_is_logged_and_passed_on) {
    gTesmirLogLevel = kAllBits;
    fake::Script().recvResults = {-1};
    fake::SendEvent("<3>CTRL-EVENT-SCAN-STARTED ");
    std::string response = "earlier";
    EXPECT_EQ(-22, client_->Execute("SCAN", "SCAN-RESULTS", response, true));
    EXPECT_EQ("earlier", response);
    EXPECT_EQ(Op::kDetach, fake::Ops().back());
    const std::vector<std::string> shapes = LogShapes();
    ASSERT_GE(shapes.size(), 2u);
    EXPECT_EQ("[Execute:N] Error during wait for events -22!\n", shapes[shapes.size() - 2]);
    EXPECT_EQ("[Execute:N] <<", shapes.back());
    EXPECT_EQ(ANDROID_LOG_ERROR, fake::Logs()[shapes.size() - 2].priority);
}

TEST_F(ExecuteTest, zero_length_reply_ends_the_process) {
    EXPECT_EXIT(Direct("", 0), ::testing::KilledBySignal(kTrapSignal), "");
}

TEST_F(ExecuteTest, reply_length_past_the_buffer_ends_the_process) {
    EXPECT_EXIT(Direct(std::string(64, 'x'), 65), ::testing::KilledBySignal(kTrapSignal), "");
}

}  // namespace
