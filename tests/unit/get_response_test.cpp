#include <errno.h>
#include <pthread.h>
#include <string.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include <android/log.h>

#include "client_test_base.h"
#include "death.h"

using fake::Op;
using ::testing::ElementsAre;

namespace {

class GetResponseTest : public ClientTest {
  protected:
    void SetUp() override {
        ClientTest::SetUp();
        OpenClient();
    }

    // Sizes of the buffers offered to each receive, in order.
    static std::vector<size_t> RecvCapacities() {
        std::vector<size_t> capacities;
        for (const fake::Call& call : fake::Calls()) {
            if (call.op == Op::kRecv) capacities.push_back(call.length);
        }
        return capacities;
    }

    std::string response_ = "untouched";
};

TEST_F(GetResponseTest, first_matching_event_is_returned_whole) {
    gTesmirLogLevel = kAllBits;
    const std::string event = "<3>CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:01:00 completed";
    fake::SendEvent(event);
    EXPECT_EQ(0, client_->GetResponse("CONNECTED", response_));
    EXPECT_EQ(event, response_);
    EXPECT_THAT(LogShapes(),
                ElementsAre("[GetResponse:N] >>",
                            "[GetResponse] response (len: " + std::to_string(event.size()) +
                                    ") - \n" + event + "\n",
                            "[GetResponse:N] <<"));
    EXPECT_EQ(ANDROID_LOG_INFO, fake::Logs()[1].priority);
    EXPECT_EQ("[%s] response (len: %lu) - \n%s\n", fake::Logs()[1].format);
    EXPECT_THAT(RecvCapacities(), ElementsAre(512u));
}

TEST_F(GetResponseTest, lone_non_matching_event_is_returned_as_success) {
    fake::SendEvent("<3>CTRL-EVENT-SCAN-STARTED ");
    EXPECT_EQ(0, client_->GetResponse("SCAN-RESULTS", response_));
    EXPECT_EQ("<3>CTRL-EVENT-SCAN-STARTED ", response_);
}

TEST_F(GetResponseTest, queued_events_are_examined_in_order_until_one_matches) {
    fake::SendEvent("<3>one");
    fake::SendEvent("<3>two");
    fake::SendEvent("<3>three");
    EXPECT_EQ(0, client_->GetResponse("tw", response_));
    EXPECT_EQ("<3>two", response_);
    EXPECT_THAT(fake::Ops(), ElementsAre(Op::kGetFd, Op::kRecv, Op::kPending, Op::kRecv));

    // The third stays queued for the next call.
    EXPECT_EQ(0, client_->GetResponse("^<3>", response_));
    EXPECT_EQ("<3>three", response_);
}

TEST_F(GetResponseTest, last_queued_event_is_returned_when_none_matches) {
    // Of one length, so that no receive is cut by the one before.
    fake::SendEvent("<3>one");
    fake::SendEvent("<3>two");
    fake::SendEvent("<3>six");
    EXPECT_EQ(0, client_->GetResponse("four", response_));
    EXPECT_EQ("<3>six", response_);
}

TEST_F(GetResponseTest, receive_length_is_not_rearmed_between_events) {
    const std::string first(40, 'a');
    const std::string second = std::string(40, 'b') + std::string(59, 'c') + "Z";
    fake::SendEvent(first);
    fake::SendEvent(second);
    EXPECT_EQ(0, client_->GetResponse("Z", response_));
    // The second receive was offered 40 bytes, so the match at byte 99 was cut away.
    EXPECT_EQ(std::string(40, 'b'), response_);
    EXPECT_THAT(RecvCapacities(), ElementsAre(512u, 40u));
}

TEST_F(GetResponseTest, pattern_is_searched_for_anywhere_case_sensitively) {
    fake::SendEvent("<3>CTRL-EVENT-EAP-STARTED EAP authentication started");
    EXPECT_EQ(0, client_->GetResponse("EAP-START", response_));
    EXPECT_EQ("<3>CTRL-EVENT-EAP-STARTED EAP authentication started", response_);

    fake::SendEvent("<3>eap");
    fake::SendEvent("<3>EAP");
    EXPECT_EQ(0, client_->GetResponse("^<3>EAP$", response_));
    EXPECT_EQ("<3>EAP", response_);
    EXPECT_THAT(RecvCapacities(), ElementsAre(512u, 512u, 6u));
}

TEST_F(GetResponseTest, empty_pattern_matches_the_first_event) {
    fake::SendEvent("<3>first");
    fake::SendEvent("<3>second");
    EXPECT_EQ(0, client_->GetResponse("", response_));
    EXPECT_EQ("<3>first", response_);
}

TEST_F(GetResponseTest, event_text_ends_at_its_first_nul_and_after_512_bytes) {
    fake::SendEvent(std::string("<3>A\0B", 6));
    EXPECT_EQ(0, client_->GetResponse("B", response_));
    EXPECT_EQ("<3>A", response_);

    fake::ClearCalls();
    fake::SendEvent(std::string(700, 'x'));
    EXPECT_EQ(0, client_->GetResponse("x", response_));
    EXPECT_EQ(std::string(512, 'x'), response_);
}

TEST_F(GetResponseTest, no_event_times_out_after_3s_with_the_last_error_text) {
    gTesmirLogLevel = kAllBits;
    errno = EADDRINUSE;  // the time-out sets no errno; the message names whatever came last
    EXPECT_EQ(-22, client_->GetResponse("anything", response_));
    EXPECT_EQ("untouched", response_);
    EXPECT_THAT(LogShapes(), ElementsAre("[GetResponse:N] >>",
                                         std::string("[GetResponse:N] Async wait timed out 0 -") +
                                                 strerror(EADDRINUSE) + "!",
                                         "[GetResponse:N] Error in recieving events -22!",
                                         "[GetResponse:N] <<"));
    EXPECT_EQ(ANDROID_LOG_ERROR, fake::Logs()[1].priority);
    EXPECT_EQ("[%s:%d] Async wait timed out %d -%s!", fake::Logs()[1].format);
    EXPECT_EQ(ANDROID_LOG_ERROR, fake::Logs()[2].priority);
    EXPECT_EQ("[%s:%d] Error in recieving events %d!", fake::Logs()[2].format);
    ASSERT_EQ(1u, fake::SelectTimeouts().size());
    EXPECT_EQ(3, fake::SelectTimeouts()[0].tv_sec);
    EXPECT_EQ(0, fake::SelectTimeouts()[0].tv_usec);
}

TEST_F(GetResponseTest, all_waits_of_one_call_share_the_3s_budget) {
    std::thread late([] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        fake::SendEvent("<3>late");
    });
    // Claim one more event is queued when none is, so that a second wait happens.
    fake::Script().pendingResults = {1};
    EXPECT_EQ(-22, client_->GetResponse("never", response_));
    late.join();
    EXPECT_EQ("untouched", response_);
    ASSERT_EQ(2u, fake::SelectTimeouts().size());
    EXPECT_EQ(3, fake::SelectTimeouts()[0].tv_sec);
    // The second wait got only what the first left, not a fresh 3 s.
    const struct timeval& second = fake::SelectTimeouts()[1];
    EXPECT_LT(second.tv_sec * 1000000 + second.tv_usec, 2100000);
    EXPECT_GT(second.tv_sec * 1000000 + second.tv_usec, 0);
}

TEST_F(GetResponseTest, malformed_pattern_without_an_event_only_times_out) {
    EXPECT_EQ(-22, client_->GetResponse("(", response_));
}

TEST_F(GetResponseTest, receive_failure_gives_einval) {
    gTesmirLogLevel = kAllBits;
    fake::Script().recvResults = {-1};
    fake::SendEvent("<3>event");
    EXPECT_EQ(-22, client_->GetResponse("event", response_));
    EXPECT_EQ("untouched", response_);
    EXPECT_THAT(
            LogShapes(),
            ElementsAre("[GetResponse:N] >>", "[GetResponse:N] Error in recieving message -1!",
                        "[GetResponse:N] Error in recieving events -22!", "[GetResponse:N] <<"));
    EXPECT_EQ(ANDROID_LOG_ERROR, fake::Logs()[1].priority);
    EXPECT_EQ("[%s:%d] Error in recieving message %d!", fake::Logs()[1].format);
}

TEST_F(GetResponseTest, pending_check_failure_is_passed_on) {
    gTesmirLogLevel = kAllBits;
    fake::Script().pendingResults = {-5};
    fake::SendEvent("<3>event");
    EXPECT_EQ(-5, client_->GetResponse("other", response_));
    EXPECT_EQ("untouched", response_);
    EXPECT_EQ("[GetResponse:N] Error in recieving events -5!", LogShapes()[1]);
}

void NoOp(int /*signal*/) {}

TEST_F(GetResponseTest, interrupted_wait_is_not_retried) {
    struct sigaction action = {};
    action.sa_handler = NoOp;
    struct sigaction previous;
    ASSERT_EQ(0, sigaction(SIGUSR1, &action, &previous));
    const pthread_t waiter = pthread_self();
    std::thread interrupter([waiter] {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        pthread_kill(waiter, SIGUSR1);
    });
    gTesmirLogLevel = kAllBits;
    EXPECT_EQ(-1, client_->GetResponse("event", response_));
    interrupter.join();
    sigaction(SIGUSR1, &previous, nullptr);
    EXPECT_EQ("untouched", response_);
    EXPECT_EQ("[GetResponse:N] Error in recieving events -1!", LogShapes()[1]);
}

TEST_F(GetResponseTest, descriptor_beyond_fd_setsize_ends_the_process) {
    fake::Script().fd = FD_SETSIZE;
    EXPECT_EXIT(client_->GetResponse("x", response_), ::testing::KilledBySignal(SIGABRT), "");
}

TEST_F(GetResponseTest, malformed_pattern_ends_the_process_once_an_event_arrives) {
    fake::SendEvent("<3>event");
    EXPECT_EXIT(client_->GetResponse("(", response_), ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
