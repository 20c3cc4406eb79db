// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <errno.h>

#include "client_test_base.h"

using namespace std::string_literals;
using ::testing::ElementsAre;

namespace {

class GetResponseTest : public ClientTest {
  protected:
    void SetUp() override {
        ClientTest::SetUp();
        OpenClient();
    }

    int32_t GetResponse(const std::string& pattern) {
        return client_->GetResponse(pattern, response_);
    }

    std::string response_ = "untouched";
};

TEST_F(GetResponseTest, queued_events_are_examined_in_order_until_one_matches) {
    const std::string longer = std::string(40, 'b') + std::string(59, 'c') + "Z";
    struct Case {
        std::vector<std::string> events;
        std::string pattern;
        std::string response;
        std::vector<size_t> capacities;  // offered to each receive
    };
    const Case cases[] = {
            {{"<3>CTRL-EVENT-CONNECTED - to 02:00:00:00:01:00"},
             "CONNECTED",
             "<3>CTRL-EVENT-CONNECTED - to 02:00:00:00:01:00",
             {512}},
            // Success without a match: the last event queued.
            {{"<3>SCAN-STARTED "}, "SCAN-RESULTS", "<3>SCAN-STARTED ", {512}},
            {{"<3>one", "<3>two", "<3>six"}, "four", "<3>six", {512, 6, 6}},
            // A shorter event after a longer one keeps nothing of the longer one.
            {{"<3>longer event", "<3>short"}, "short", "<3>short", {512, 15}},
            // The receive length is not re-armed: the second is cut to the first's 40 bytes.
            {{std::string(40, 'a'), longer}, "Z", std::string(40, 'b'), {512, 40}},
            {{"<3>eap", "<3>EAP"}, "^<3>EAP$", "<3>EAP", {512, 6}},
            {{"<3>EAP-STARTED EAP authentication"},
             "EAP-START",
             "<3>EAP-STARTED EAP authentication",
             {512}},
            // The text ends at its first NUL: what follows is not searched.
            {{"<3>A\0B"s, "<3>C\0"s}, "B", "<3>C", {512, 6}},
            {{std::string(700, 'x')}, "x", std::string(512, 'x'), {512}},
            // Last: the second event stays queued for the next call.
            {{"<3>first", "<3>second"}, "", "<3>first", {512}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pattern);
        for (const std::string& event : c.events) fake::SendEvent(event);
        EXPECT_EQ(0, GetResponse(c.pattern));
        EXPECT_EQ(c.response, response_);
        std::vector<std::string> receives;
        for (size_t capacity : c.capacities) {
            receives.push_back("recv 2 (" + std::to_string(capacity) + ")");
        }
        EXPECT_EQ(receives, Take("recv"));
    }
    EXPECT_EQ(0, GetResponse("^<3>"));
    EXPECT_EQ("<3>second", response_);
    EXPECT_THAT(Take(), ElementsAre("get_fd 2", "select 3.000000", "recv 2 (512)"));
}

TEST_F(GetResponseTest, failures_leave_the_response_and_pass_on_their_status) {
    struct Case {
        std::deque<fake::Script::SelectStep> waits;
        int recvResult, pendingResult;
        int32_t status;
        std::vector<std::string> transcript;  // after get_fd and the first wait
    };
    const Case cases[] = {
            // Out of time after a first event: the second wait had only what the first left, and
            // the message names the last error, which the time-out did not set.
            {{{1, 2400000}, {0}},
             0,
             1,
             -22,
             {"recv 2 (512)", "pending 2", "select 0.600000",
              "E [GetResponse:N] Async wait timed out 0 -"s + strerror(EADDRINUSE) + "!",
              "E [GetResponse:N] Error in recieving events -22!"}},
            // An interrupted wait is not retried.
            {{{-1}}, 0, 0, -1, {"E [GetResponse:N] Error in recieving events -1!"}},
            {{{1}},
             -1,
             0,
             -22,
             {"recv 2 (512)", "E [GetResponse:N] Error in recieving message -1!",
              "E [GetResponse:N] Error in recieving events -22!"}},
            {{{1}},
             0,
             -5,
             -5,
             {"recv 2 (512)", "pending 2", "E [GetResponse:N] Error in recieving events -5!"}},
    };
    gTesmirLogLevel = 0x01;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.status);
        fake::SendEvent("<3>event");
        fake::GetScript().selectSteps = c.waits;
        if (c.recvResult != 0) fake::GetScript().recvResults = {c.recvResult};
        if (c.pendingResult != 0) fake::GetScript().pendingResults = {c.pendingResult};
        errno = EADDRINUSE;
        EXPECT_EQ(c.status, GetResponse("other"));
        EXPECT_EQ("untouched", response_);
        std::vector<std::string> expected = {"get_fd 2", "select 3.000000"};
        expected.insert(expected.end(), c.transcript.begin(), c.transcript.end());
        EXPECT_EQ(expected, Take());
    }
}

TEST_F(GetResponseTest, bad_patterns_and_descriptors_end_the_process) {
    EXPECT_EQ(-22, GetResponse("("));  // compiled only once an event has come
    fake::SendEvent("<3>event");
    EXPECT_EXIT(GetResponse("("), ::testing::KilledBySignal(SIGABRT), "");
    fake::GetScript().fd = FD_SETSIZE;
    EXPECT_EXIT(GetResponse("x"), ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
