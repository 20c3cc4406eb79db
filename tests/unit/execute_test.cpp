// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "client_test_base.h"

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
        fake::GetScript().reply = reply;
        fake::GetScript().replyLen = replyLen;
        std::string response = "untouched";
        EXPECT_EQ(0, client_->Execute("STATUS", "ignored", response, false));
        return response;
    }

    std::string response_ = "earlier";
};

TEST_F(ExecuteTest, direct_reply_is_cut_blindly_to_63_bytes_and_loses_its_spaces) {
    const std::pair<std::string, std::string> cases[] = {
            {"OK\n", "OK"},
            {"FAIL", "FAI"},               // no line feed: the last real byte goes
            {" a\t b\r c \n", "a\tb\rc"},  // spaces only
            {"a b\0c d\n"s, "ab"},         // the text ends at its own NUL
            {"wpa_state=COMPLETED ssid=xyz " + std::string(40, 'x'),
             "wpa_state=COMPLETEDssid=xyz" + std::string(34, 'x')},
    };
    for (const auto& [reply, response] : cases) {
        SCOPED_TRACE(reply);
        EXPECT_EQ(response, Direct(reply));
    }
}

TEST_F(ExecuteTest, direct_mode_with_every_bit) {
    gTesmirLogLevel = kAllBits;
    EXPECT_EQ("abc", Direct("a b c\n"));
    // The reply is logged as cut, before its spaces go.
    EXPECT_THAT(Take(),
                ElementsAre("D [Execute:N] >>", "attach 2",
                            "I [Execute] Executing Command: STATUS\n", "request 1 STATUS (64)",
                            "D Sync Response (len-6): a b c", "detach 2", "D [Execute:N] <<"));
}

TEST_F(ExecuteTest, command_is_sent_whole_with_its_length) {
    EXPECT_EQ(0, client_->Execute("SET_NETWORK 0 ssid \"a\0b\""s, "", response_, false));
    EXPECT_THAT(Take(),
                ElementsAre("attach 2", "request 1 SET_NETWORK 0 ssid \"a\0b\" (64)"s, "detach 2"));
}

TEST_F(ExecuteTest, failures_leave_the_response_alone) {
    gTesmirLogLevel = kAllBits;
    // An attach failure returns at once: nothing sent, no detach, no exit trace.
    fake::GetScript().attachResult = -3;
    EXPECT_EQ(-1, client_->Execute("PING", "", response_, false));
    EXPECT_THAT(Take(), ElementsAre("D [Execute:N] >>", "attach 2",
                                    "E [Execute] Unable to attach wpa handle for recieving "
                                    "events.\n"));

    fake::GetScript().attachResult = 0;
    fake::GetScript().requestResult = -2;
    EXPECT_EQ(-2, client_->Execute("PING", "", response_, false));
    EXPECT_THAT(Take(), ElementsAre("D [Execute:N] >>", "attach 2",
                                    "I [Execute] Executing Command: PING\n", "request 1 PING (64)",
                                    "E [Execute] Unable to request command execution or Invalid "
                                    "command.(Error: -2)\n",
                                    "detach 2", "D [Execute:N] <<"));

    fake::GetScript().requestResult = 0;  // and no event comes
    gTesmirLogLevel = 0x01;
    EXPECT_EQ(-22, client_->Execute("SCAN", "SCAN-RESULTS", response_, true));
    const std::vector<std::string> transcript = Take();
    EXPECT_THAT(std::vector<std::string>(transcript.end() - 2, transcript.end()),
                ElementsAre("E [Execute:N] Error during wait for events -22!\n", "detach 2"));
    EXPECT_EQ("earlier", response_);
}

TEST_F(ExecuteTest, waiting_mode_returns_the_event_untouched) {
    gTesmirLogLevel = kAllBits;
    // The text ends at the NUL; the logged length is that of all the bytes received.
    const std::string event = "<3>CTRL-EVENT-NETWORK-ADDED 0\n";
    fake::SendEvent(event + "\0tail"s);
    EXPECT_EQ(0, client_->Execute("ADD_NETWORK", "NETWORK-ADDED", response_, true));
    EXPECT_EQ(event, response_);
    EXPECT_THAT(Take(), ElementsAre("D [Execute:N] >>", "attach 2",
                                    "I [Execute] Executing Command: ADD_NETWORK\n",
                                    "request 1 ADD_NETWORK (64)", "D [GetResponse:N] >>",
                                    "get_fd 2", "select 3.000000", "recv 2 (512)",
                                    "I [GetResponse] response (len: 35) - \n" + event + "\n",
                                    "D [GetResponse:N] <<", "detach 2", "D [Execute:N] <<"));
}

TEST_F(ExecuteTest, impossible_reply_lengths_end_the_process) {
    EXPECT_EXIT(Direct("", 0), EndedByCheck, CheckMessage("sub-overflow"));
    EXPECT_EXIT(Direct(std::string(64, 'x'), 65), EndedByCheck, CheckMessage("out-of-bounds"));
}

}  // namespace
