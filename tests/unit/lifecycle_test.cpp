#include "client_test_base.h"

using fake::Op;
using ::testing::ElementsAre;

namespace {

class LifecycleTest : public ClientTest {};

TEST_F(LifecycleTest, factory_makes_distinct_closed_clients) {
    WpacliWrapper* other = GetWpacliWrapperHandle();
    EXPECT_NE(client_, other);
    client_->Close();
    other->Close();
    delete other;
    EXPECT_TRUE(fake::Calls().empty());
}

TEST_F(LifecycleTest, client_holds_two_connection_handles_behind_its_table) {
    EXPECT_EQ(3 * sizeof(void*), sizeof(WpacliWrapper));
    EXPECT_TRUE(std::is_polymorphic_v<WpacliWrapper>);
}

TEST_F(LifecycleTest, open_opens_command_then_event_connection_on_one_path) {
    EXPECT_EQ(0, client_->Open(kPath));
    ASSERT_THAT(fake::Ops(), ElementsAre(Op::kOpen, Op::kOpen));
    EXPECT_EQ(kPath, fake::Calls()[0].text);
    EXPECT_EQ(kPath, fake::Calls()[1].text);
    EXPECT_EQ(2, fake::OpenConnections());

    // Commands go to the first connection, event registration to the second.
    fake::ClearCalls();
    std::string response;
    EXPECT_EQ(0, client_->Execute("PING", "", response, false));
    ASSERT_THAT(fake::Ops(), ElementsAre(Op::kAttach, Op::kRequest, Op::kDetach));
    EXPECT_EQ(2, fake::Calls()[0].conn);
    EXPECT_EQ(1, fake::Calls()[1].conn);
    EXPECT_EQ(2, fake::Calls()[2].conn);
}

TEST_F(LifecycleTest, failing_command_connection_leaves_client_closed) {
    fake::Script().openFails = {true};
    EXPECT_EQ(-1, client_->Open(kPath));
    EXPECT_THAT(fake::Ops(), ElementsAre(Op::kOpen));
    client_->Close();
    EXPECT_THAT(fake::Ops(), ElementsAre(Op::kOpen));
}

TEST_F(LifecycleTest, failing_event_connection_closes_command_connection) {
    fake::Script().openFails = {false, true};
    EXPECT_EQ(-1, client_->Open(kPath));
    ASSERT_THAT(fake::Ops(), ElementsAre(Op::kOpen, Op::kOpen, Op::kClose));
    EXPECT_EQ(1, fake::Calls()[2].conn);
    EXPECT_EQ(0, fake::OpenConnections());
    fake::ClearCalls();
    client_->Close();
    EXPECT_TRUE(fake::Calls().empty());
}

TEST_F(LifecycleTest, reopen_closes_both_old_connections_first) {
    ASSERT_EQ(0, client_->Open(kPath));
    fake::ClearCalls();
    EXPECT_EQ(0, client_->Open("/other"));
    ASSERT_THAT(fake::Ops(), ElementsAre(Op::kClose, Op::kClose, Op::kOpen, Op::kOpen));
    EXPECT_EQ(1, fake::Calls()[0].conn);
    EXPECT_EQ(2, fake::Calls()[1].conn);
    EXPECT_EQ("/other", fake::Calls()[2].text);
    EXPECT_EQ(2, fake::OpenConnections());
}

TEST_F(LifecycleTest, failed_reopen_leaves_client_closed) {
    ASSERT_EQ(0, client_->Open(kPath));
    fake::Script().openFails = {true};
    EXPECT_EQ(-1, client_->Open(kPath));
    EXPECT_EQ(0, fake::OpenConnections());
    fake::ClearCalls();
    client_->Close();
    EXPECT_TRUE(fake::Calls().empty());
}

TEST_F(LifecycleTest, close_closes_command_then_event_connection) {
    ASSERT_EQ(0, client_->Open(kPath));
    fake::ClearCalls();
    client_->Close();
    ASSERT_THAT(fake::Ops(), ElementsAre(Op::kClose, Op::kClose));
    EXPECT_EQ(1, fake::Calls()[0].conn);
    EXPECT_EQ(2, fake::Calls()[1].conn);
    client_->Close();
    EXPECT_EQ(2u, fake::Calls().size());
}

TEST_F(LifecycleTest, delete_closes_an_open_client) {
    ASSERT_EQ(0, client_->Open(kPath));
    delete client_;
    client_ = nullptr;
    EXPECT_EQ(0, fake::OpenConnections());
}

TEST_F(LifecycleTest, path_is_cut_at_an_embedded_nul) {
    EXPECT_EQ(0, client_->Open(std::string("/tmp/wpa\0ignored", 16)));
    EXPECT_EQ("/tmp/wpa", fake::Calls()[0].text);
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
    EXPECT_EQ(0, derived->Open(kPath));
    EXPECT_EQ(1, closes);
    fake::Script().openFails = {true};
    EXPECT_EQ(-1, derived->Open(kPath));
    EXPECT_EQ(3, closes);  // at the start and on the failure path

    fake::Script().openFails = {};
    ASSERT_EQ(0, derived->Open(kPath));
    ASSERT_EQ(4, closes);
    delete derived;
    EXPECT_EQ(4, closes);
    EXPECT_EQ(0, fake::OpenConnections());
}

}  // namespace
