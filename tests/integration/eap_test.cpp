#include <algorithm>
#include <chrono>
#include <map>
#include <regex>
#include <thread>

#include "WpaStringUtils.h"
#include "raw_client.h"
#include "supplicant_fixture.h"

namespace {

using namespace std::chrono_literals;

// A supplicant with an 802.1X authenticator on the other end of its link.
class EapTest : public SupplicantTest {
  protected:
    bool WithAuthenticator() const override { return true; }

    // Configures network 0 for EAP-MD5 against the lab's authenticator, still disabled.
    void AddEapNetwork() {
        ASSERT_EQ("0", Direct("ADD_NETWORK"));
        for (const char* setting : {"key_mgmt IEEE8021X", "eap MD5", "identity \"tesmir\"",
                                    "password \"tesmir-secret\"", "eapol_flags 0"}) {
            ASSERT_EQ("OK", Direct(std::string("SET_NETWORK 0 ") + setting)) << setting;
        }
    }

    // Polls the supplicant's state with a large buffer until it is |state| or 10 s pass.
    bool ReachesState(const std::string& state) {
        for (int i = 0; i < 100; ++i) {
            if (RawRequest(lab_->socketPath(), lab_->dir(), "STATUS")
                        .find("wpa_state=" + state + "\n") != std::string::npos) {
                return true;
            }
            std::this_thread::sleep_for(100ms);
        }
        return false;
    }
};

TEST_F(EapTest, waiting_for_the_first_event_of_the_exchange) {
    AddEapNetwork();
    RawMonitor monitor(lab_->socketPath(), lab_->dir());
    ASSERT_TRUE(monitor.ok());

    std::string response;
    ASSERT_EQ(0, client_->Execute("ENABLE_NETWORK 0", "^<3>Associated with ", response, true));
    EXPECT_EQ("<3>Associated with 01:80:c2:00:00:03", response);

    ASSERT_TRUE(monitor.WaitFor(std::regex("CTRL-EVENT-CONNECTED"), 10s));
    EXPECT_TRUE(ReachesState("COMPLETED"));
    // What the exchange showed our own monitor, in order.
    const std::vector<std::string>& events = monitor.events();
    auto position = [&](const char* name) {
        return std::find_if(
                       events.begin(), events.end(),
                       [&](const std::string& e) { return e.find(name) != std::string::npos; }) -
               events.begin();
    };
    EXPECT_LT(position("CTRL-EVENT-EAP-STARTED"), position("CTRL-EVENT-EAP-SUCCESS"));
    EXPECT_LT(position("CTRL-EVENT-EAP-SUCCESS"), position("CTRL-EVENT-CONNECTED"));
}

TEST_F(EapTest, waiting_for_a_later_event_may_end_at_an_earlier_one) {
    AddEapNetwork();
    RawMonitor monitor(lab_->socketPath(), lab_->dir());
    ASSERT_TRUE(monitor.ok());

    std::string response;
    ASSERT_EQ(0, client_->Execute("ENABLE_NETWORK 0", "CTRL-EVENT-CONNECTED", response, true));
    ASSERT_TRUE(monitor.WaitFor(std::regex("CTRL-EVENT-CONNECTED"), 10s));
    // Status 0 promises only this: the response is the connected event or an event of the
    // exchange before it, whichever ended the wait with nothing more queued. Events after the
    // first come cut to the first one's length, as the receive length is not re-armed.
    ASSERT_FALSE(response.empty());
    const std::vector<std::string>& events = monitor.events();
    EXPECT_TRUE(std::any_of(events.begin(), events.end(), [&](const std::string& event) {
        return event.compare(0, response.size(), response) == 0;
    })) << response;
    EXPECT_TRUE(ReachesState("COMPLETED"));
}

TEST_F(EapTest, key_values_of_real_events) {
    AddEapNetwork();
    RawMonitor monitor(lab_->socketPath(), lab_->dir());
    ASSERT_TRUE(monitor.ok());
    ASSERT_EQ("OK", Direct("ENABLE_NETWORK 0"));
    ASSERT_TRUE(monitor.WaitFor(std::regex("CTRL-EVENT-CONNECTED"), 10s));

    auto find = [&](const char* name) {
        for (const std::string& event : monitor.events()) {
            if (event.find(name) != std::string::npos) return event;
        }
        return std::string();
    };
    const std::string method = find("CTRL-EVENT-EAP-METHOD");
    ASSERT_EQ("<3>CTRL-EVENT-EAP-METHOD EAP vendor 0 method 4 (MD5) selected", method);
    std::map<std::string, std::string> methodValues = {
            {"vendor", ""}, {"^method$", ""}, {"^EAP$", ""}, {"MD5", "none"}, {"ssid", "none"}};
    WpaStringUtils::GetKeyValues(method, methodValues);
    EXPECT_EQ((std::map<std::string, std::string>{{"vendor", "0"},
                                                  {"^method$", "4"},
                                                  {"^EAP$", "vendor"},
                                                  {"MD5", "selected"},
                                                  {"ssid", "none"}}),
              methodValues);

    const std::string connected = find("CTRL-EVENT-CONNECTED");
    std::map<std::string, std::string> connectedValues = {{"^to$", ""}, {"Connection", ""}};
    WpaStringUtils::GetKeyValues(connected, connectedValues);
    EXPECT_EQ("01:80:c2:00:00:03", connectedValues["^to$"]) << connected;
    EXPECT_EQ("to", connectedValues["Connection"]);
}

}  // namespace
