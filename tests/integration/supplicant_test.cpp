#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "direct_reply.h"
#include "raw_client.h"
#include "supplicant_fixture.h"

namespace {

using Clock = std::chrono::steady_clock;

TEST_F(SupplicantTest, ping_gives_pong) {
    EXPECT_EQ("PONG", Direct("PING"));
}

TEST_F(SupplicantTest, unknown_command_loses_its_space) {
    EXPECT_EQ("UNKNOWN COMMAND\n", RawRequest(lab_->socketPath(), lab_->dir(), "NOT_A_COMMAND"));
    EXPECT_EQ("UNKNOWNCOMMAND", Direct("NOT_A_COMMAND"));
}

TEST_F(SupplicantTest, long_replies_are_cut_to_63_bytes_less_spaces) {
    for (const char* command : {"GET_CAPABILITY eap", "STATUS"}) {
        SCOPED_TRACE(command);
        const std::string raw = RawRequest(lab_->socketPath(), lab_->dir(), command);
        ASSERT_GT(raw.size(), 64u);
        EXPECT_EQ(DirectModeResponse(raw), Direct(command));
    }
}

TEST_F(SupplicantTest, network_events_end_waiting_mode) {
    std::string response;
    ASSERT_EQ(0, client_->Execute("ADD_NETWORK", "NETWORK-ADDED", response, true));
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-ADDED 0", response);
    ASSERT_EQ(0, client_->Execute("ADD_NETWORK", "NETWORK-ADDED", response, true));
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-ADDED 1", response);
    ASSERT_EQ(0, client_->Execute("REMOVE_NETWORK 0", "NETWORK-REMOVED", response, true));
    EXPECT_EQ("<3>CTRL-EVENT-NETWORK-REMOVED 0", response);
    // The supplicant agrees: only network 1 is left.
    const std::string networks = RawRequest(lab_->socketPath(), lab_->dir(), "LIST_NETWORKS");
    EXPECT_NE(std::string::npos, networks.find("\n1\t")) << networks;
    EXPECT_EQ(std::string::npos, networks.find("\n0\t")) << networks;
}

TEST_F(SupplicantTest, wait_without_attach_times_out) {
    const auto start = Clock::now();
    std::string response = "untouched";
    EXPECT_EQ(-22, client_->GetResponse("", response));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(2900));
    EXPECT_EQ("untouched", response);
}

TEST_F(SupplicantTest, failed_open_then_reopen) {
    EXPECT_EQ(-1, client_->Open(lab_->dir() + "/no-such-socket"));
    std::string response;
    EXPECT_EQ(0, client_->Open(lab_->socketPath()));
    EXPECT_EQ("PONG", Direct("PING"));
    EXPECT_EQ(0, client_->Open(lab_->socketPath()));
    EXPECT_EQ("PONG", Direct("PING"));
}

TEST_F(SupplicantTest, paths_that_are_not_a_supplicant_fail_open) {
    const std::string file = lab_->dir() + "/plain-file";
    std::ofstream(file) << "not a socket";
    EXPECT_EQ(-1, client_->Open(file));

    const std::string streamPath = lab_->dir() + "/stream-socket";
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(listener, 0);
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    streamPath.copy(addr.sun_path, sizeof(addr.sun_path) - 1);
    ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)));
    ASSERT_EQ(0, listen(listener, 1));
    EXPECT_EQ(-1, client_->Open(streamPath));
    close(listener);
}

TEST_F(SupplicantTest, supplicant_killed_while_open_then_back) {
    ASSERT_TRUE(lab_->StopSupplicant());
    const auto start = Clock::now();
    std::string response = "untouched";
    EXPECT_LT(client_->Execute("PING", "", response, false), 0);
    // libwpa_client waits at most 10 s for a reply.
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(11));
    EXPECT_EQ("untouched", response);

    ASSERT_TRUE(lab_->StartSupplicant());
    ASSERT_EQ(0, client_->Open(lab_->socketPath()));
    EXPECT_EQ("PONG", Direct("PING"));
}

}  // namespace
