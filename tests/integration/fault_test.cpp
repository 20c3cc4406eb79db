// The supplicant taken away at each point of a call: statuses are the documented negative values,
// no call outlasts libwpa_client's own 10 s limit or the 3 s budget, and the client works again
// after Open.

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "supplicant_fixture.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

class FaultTest : public SupplicantTest {
  protected:
    void ExpectWorksAfterReopen() {
        ASSERT_TRUE(lab_->StartSupplicant());
        ASSERT_EQ(0, client_->Open(lab_->socketPath()));
        EXPECT_EQ("PONG", Direct("PING"));
    }
};

TEST_F(FaultTest, killed_between_calls) {
    EXPECT_EQ("PONG", Direct("PING"));
    ASSERT_TRUE(lab_->StopSupplicant());
    std::string response = "untouched";
    const auto start = Clock::now();
    EXPECT_EQ(-1, client_->Execute("PING", "", response, false));  // the attach fails
    EXPECT_LT(Clock::now() - start, 1s);
    EXPECT_EQ("untouched", response);
    ExpectWorksAfterReopen();
}

TEST_F(FaultTest, killed_during_the_wait) {
    std::thread killer([&] {
        std::this_thread::sleep_for(500ms);
        lab_->StopSupplicant();
    });
    std::string response = "untouched";
    const auto start = Clock::now();
    // PING sends no event: the call waits, and the supplicant goes away meanwhile. A supplicant
    // going down announces it with an event, which then ends the wait as the last one queued
    // (status 0); without one, the wait runs out (-22). Either way the detach that follows may
    // wait out libwpa_client's 10 s on the dying socket.
    const int32_t status = client_->Execute("PING", "NEVER", response, true);
    killer.join();
    const auto took = Clock::now() - start;
    EXPECT_LT(took, 3s + 10s + 1s);
    printf("fault: killed during the wait: status %d, response \"%s\", after %lld ms\n", status,
           response.c_str(),
           static_cast<long long>(
                   std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
    if (status == 0) {
        EXPECT_EQ(0u, response.rfind("<3>", 0)) << response;
    } else {
        EXPECT_EQ(-22, status);
        EXPECT_EQ("untouched", response);
    }
    ExpectWorksAfterReopen();
}

TEST_F(FaultTest, socket_replaced_by_one_that_never_answers) {
    ASSERT_TRUE(lab_->StopSupplicant());
    // The supplicant took its control directory with it.
    const std::string& path = lab_->socketPath();
    mkdir(path.substr(0, path.rfind('/')).c_str(), 0700);
    const int silent = socket(AF_UNIX, SOCK_DGRAM, 0);
    ASSERT_GE(silent, 0);
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    lab_->socketPath().copy(addr.sun_path, sizeof(addr.sun_path) - 1);
    ASSERT_EQ(0, bind(silent, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)));

    // Opening succeeds (it is a datagram socket); the attach then waits out libwpa_client's
    // 10 s and fails.
    ASSERT_EQ(0, client_->Open(lab_->socketPath()));
    std::string response = "untouched";
    const auto start = Clock::now();
    EXPECT_EQ(-1, client_->Execute("PING", "", response, false));
    EXPECT_LT(Clock::now() - start, 12s);
    EXPECT_EQ("untouched", response);

    close(silent);
    unlink(lab_->socketPath().c_str());
    ExpectWorksAfterReopen();
}

}  // namespace
