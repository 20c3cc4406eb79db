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
            // Last: it leaves the second event queued.
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
}

TEST_F(GetResponseTest, events_after_the_match_stay_queued) {
    for (const char* event : {"<3>one", "<3>two", "<3>three"}) fake::SendEvent(event);
    EXPECT_EQ(0, GetResponse("tw"));
    EXPECT_EQ("<3>two", response_);
    EXPECT_THAT(Take(), ElementsAre("get_fd 2", "select 3.000000", "recv 2 (512)", "pending 2",
                                    "select 3.000000", "recv 2 (6)"));
    EXPECT_EQ(0, GetResponse("^<3>"));
    EXPECT_EQ("<3>three", response_);
}

TEST_F(GetResponseTest, success_logs_the_received_byte_count_and_the_text) {
    gTesmirLogLevel = kAllBits;
    fake::SendEvent("<3>A\0B"s);
    EXPECT_EQ(0, GetResponse("A"));
    EXPECT_THAT(Take("L"),
                ElementsAre("D [GetResponse:N] >>", "I [GetResponse] response (len: 6) - \n<3>A\n",
                            "D [GetResponse:N] <<"));
}

TEST_F(GetResponseTest, no_event_in_3s_fails_with_einval_naming_the_last_error) {
    gTesmirLogLevel = kAllBits;
    errno = EADDRINUSE;  // the time-out sets no errno; the message names whatever came last
    EXPECT_EQ(-22, GetResponse("anything"));
    EXPECT_EQ("untouched", response_);
    EXPECT_THAT(Take(), ElementsAre("D [GetResponse:N] >>", "get_fd 2", "select 3.000000",
                                    "E [GetResponse:N] Async wait timed out 0 -"s +
                                            strerror(EADDRINUSE) + "!",
                                    "E [GetResponse:N] Error in recieving events -22!",
                                    "D [GetResponse:N] <<"));
}

TEST_F(GetResponseTest, all_waits_of_one_call_share_the_3s_budget) {
    fake::SendEvent("<3>early");
    fake::GetScript().pendingResults = {1};  // claims one more is queued: a second wait
    fake::GetScript().selectSteps = {{1, 2400000}, {0}};
    EXPECT_EQ(-22, GetResponse("never"));
    EXPECT_THAT(Take("select"), ElementsAre("select 3.000000", "select 0.600000"));
}

TEST_F(GetResponseTest, failures_leave_the_response_and_pass_on_their_status) {
    struct Case {
        int selectResult, recvResult, pendingResult;
        int32_t status;
        std::vector<std::string> transcript;  // after get_fd and the first wait
    };
    const Case cases[] = {
            // An interrupted wait is not retried.
            {-1, 0, 0, -1, {"E [GetResponse:N] Error in recieving events -1!"}},
            {1,
             -1,
             0,
             -22,
             {"recv 2 (512)", "E [GetResponse:N] Error in recieving message -1!",
              "E [GetResponse:N] Error in recieving events -22!"}},
            {1,
             0,
             -5,
             -5,
             {"recv 2 (512)", "pending 2", "E [GetResponse:N] Error in recieving events -5!"}},
    };
    gTesmirLogLevel = 0x01;
    fake::SendEvent("<3>event");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.status);
        fake::GetScript().selectSteps = {{c.selectResult}};
        if (c.recvResult < 0) fake::GetScript().recvResults = {c.recvResult};
        if (c.pendingResult < 0) fake::GetScript().pendingResults = {c.pendingResult};
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
