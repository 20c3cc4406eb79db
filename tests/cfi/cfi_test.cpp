// Built only with TESMIR_CFI: the library and this test are both compiled with cross-DSO
// control-flow integrity, and the CFI runtime is linked into this executable.

#include <signal.h>

#include <gtest/gtest.h>

#include "WpacliWrapper.h"

namespace {

constexpr const char* kNoSupplicant = "/nonexistent/wpa_supplicant/ctrl";

class HostClient : public WpacliWrapper {
  public:
    void Close() override {
        ++closes;
        WpacliWrapper::Close();
    }
    int closes = 0;
};

TEST(cfi, open_calls_the_close_of_a_derived_host_class) {
    gTesmirLogLevel = 0;
    HostClient client;
    EXPECT_EQ(-1, client.Open(kNoSupplicant));
    EXPECT_EQ(2, client.closes);  // before opening, and again on failure
}

// Same shape as WpacliWrapper, but no relation to it.
class Impostor {
  public:
    virtual ~Impostor() = default;
    virtual int32_t Open(const std::string& /*path*/) { return 0; }
    virtual void Close() {}
    virtual int32_t Execute(const std::string& /*command*/, const std::string& /*pattern*/,
                            std::string& /*response*/, bool /*wait*/) {
        return 0;
    }
    void* handles[2] = {};
};
static_assert(sizeof(Impostor) == sizeof(WpacliWrapper));

TEST(cfi, open_traps_on_a_table_of_an_unrelated_class) {
    gTesmirLogLevel = 0;
    Impostor impostor;
    // Entered directly, so the first virtual call made is the library's own call of Close().
    auto* client = reinterpret_cast<WpacliWrapper*>(&impostor);
    EXPECT_EXIT(client->WpacliWrapper::Open(kNoSupplicant), ::testing::KilledBySignal(SIGILL), "");
}

}  // namespace
