// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The networks fleets join (scripts/radio-lab.sh run -a enterprise): 802.1X with hostapd's own
// EAP server, WPA3-Enterprise, a hidden network, OWE and an EAP network whose server never
// answers. Every connect must end in the outcome the supplicant's events tell, and a failure,
// whatever its SSID or the server certificate's subject reads like, never in a success.

#include <stdlib.h>

#include <string>
#include <vector>

#include "radio_fixture.h"

namespace {

using radio::kPassphrase;
using radio::RadioTest;
using recipes::ConnectOutcome;
using recipes::NetworkField;
using recipes::Security;

constexpr const char* kEap = "02:00:00:00:01:00";
constexpr const char* kAllFreqs = "2412 2437 2462";

class EnterpriseTest : public RadioTest {
  protected:
    void SetUp() override {
        RadioTest::SetUp();
        if (IsSkipped()) return;
        RequireLayout("enterprise");
        if (IsSkipped()) return;
        certs_ = getenv("TESMIR_LAB_CERTS");
    }

    std::string Cert(const char* name) const { return certs_ + "/" + name; }

    // PEAP-MSCHAPv2 as the lab's server takes it, trusting |ca|.
    std::vector<NetworkField> Peap(const std::string& password, const char* ca = "ca.pem") {
        return {{"eap", "PEAP"},
                {"identity", "tesmir-user"},
                {"password", password},
                {"phase2", "auth=MSCHAPV2"},
                {"ca_cert", Cert(ca)}};
    }

    // Connects, then leaves the station as the next connect expects it.
    recipes::ConnectResult Connect(const std::string& ssid, Security security,
                                   const std::vector<NetworkField>& fields, int seconds = 30,
                                   const std::string& passphrase = "") {
        recipes::ConnectResult result;
        const bool connected = recipes::Connect(*client_, ssid, security, passphrase, fields,
                                                kAllFreqs, &result, seconds);
        EXPECT_EQ(connected, result.outcome == ConnectOutcome::kConnected);
        if (connected) EXPECT_EQ(result.bssid, Connected());
        EXPECT_TRUE(recipes::Forget(*client_));
        EXPECT_EQ("OK\n", Raw("BSSID_IGNORE clear"));
        return result;
    }

    // A refusal is |told|, or kRejected when the event telling why was dropped (the header):
    // never a success, never another cause.
    static void ExpectRefused(ConnectOutcome told, const recipes::ConnectResult& result) {
        EXPECT_TRUE(result.outcome == told || result.outcome == ConnectOutcome::kRejected)
                << static_cast<int>(result.outcome);
    }

    std::string certs_;
};

TEST_F(EnterpriseTest, peap_ttls_and_wpa3_connect_and_wrong_credentials_are_rejected) {
    std::vector<NetworkField> peap = Peap("tesmir-password");
    peap.push_back({"domain_suffix_match", "tesmir.example"});
    recipes::ConnectResult result = Connect("tesmir-eap", Security::kEap, peap);
    EXPECT_EQ(ConnectOutcome::kConnected, result.outcome);
    EXPECT_EQ(kEap, result.bssid);

    // MSCHAPv2's failure is the first event of its run: on the simulated clock, always told.
    EXPECT_EQ(ConnectOutcome::kRejectedCredentials,
              Connect("tesmir-eap", Security::kEap, Peap("wrong-password")).outcome);
    std::vector<NetworkField> stranger = Peap("tesmir-password");
    stranger[1].value = "nobody";
    ExpectRefused(ConnectOutcome::kRejectedCredentials,
                  Connect("tesmir-eap", Security::kEap, stranger));

    // A password of quotes, a space and UTF-8, as bytes; TTLS-PAP on WPA3-Enterprise.
    const std::vector<NetworkField> wpa3 = {{"key_mgmt", "WPA-EAP-SHA256"},
                                            {"ieee80211w", "2"},
                                            {"eap", "TTLS"},
                                            {"identity", "tesmir quoted"},
                                            {"anonymous_identity", "anonymous@tesmir.example"},
                                            {"password", "pa\"ss 'w\xc3\xb6rd\""},
                                            {"phase2", "auth=PAP"},
                                            {"ca_cert", Cert("ca.pem")},
                                            {"domain_match", "radius.tesmir.example"}};
    result = Connect("tesmir-eap3", Security::kEap, wpa3);
    EXPECT_EQ(ConnectOutcome::kConnected, result.outcome);
    EXPECT_EQ("02:00:00:00:02:00", result.bssid);
}

TEST_F(EnterpriseTest, a_server_certificate_refused_is_told_with_its_reason_and_depth) {
    struct Case {
        const char* ssid;
        const char* ca;
        const char* domain;
        int reason;
        int depth;
    };
    const Case cases[] = {
            {"tesmir-eap", "ca2.pem", "", 1, 1},                       // unknown CA
            {"tesmir-eap-expired", "ca.pem", "", 4, 0},                // expired
            {"tesmir-eap", "ca.pem", "wrong.example", 9, 0},           // domain mismatch
            {"CTRL-EVENT-CONNECTED - Connectio", "ca.pem", "", 1, 0},  // reads like events
    };
    int told = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.ssid) + " " + c.ca + " " + c.domain);
        std::vector<NetworkField> fields = Peap("tesmir-password", c.ca);
        if (*c.domain != '\0') fields.push_back({"domain_suffix_match", c.domain});
        const recipes::ConnectResult result = Connect(c.ssid, Security::kEap, fields);
        ExpectRefused(ConnectOutcome::kRejectedServerCertificate, result);
        if (result.outcome == ConnectOutcome::kRejectedServerCertificate) {
            EXPECT_TRUE(result.certReason == c.reason || result.certReason == -1);
            EXPECT_TRUE(result.certDepth == c.depth || result.certDepth == -1);
            ++told;
        }
    }
    RecordProperty("causes_told", told);
}

TEST_F(EnterpriseTest, tls_takes_only_a_client_certificate_the_server_accepts) {
    const auto tls = [this](const char* client) {
        return std::vector<NetworkField>{{"eap", "TLS"},
                                         {"identity", "tesmir-client"},
                                         {"client_cert", Cert(client) + ".pem"},
                                         {"private_key", Cert(client) + ".key"},
                                         {"ca_cert", Cert("ca.pem")}};
    };
    EXPECT_EQ(ConnectOutcome::kConnected,
              Connect("tesmir-eap", Security::kEap, tls("client")).outcome);
    ExpectRefused(ConnectOutcome::kRejectedCredentials,
                  Connect("tesmir-eap", Security::kEap, tls("client2")));
}

TEST_F(EnterpriseTest, a_missing_field_is_asked_for_and_a_refused_one_named) {
    std::vector<NetworkField> fields = Peap("");
    fields.erase(fields.begin() + 2);  // no password
    recipes::ConnectResult result = Connect("tesmir-eap", Security::kEap, fields);
    EXPECT_EQ(ConnectOutcome::kAsksFor, result.outcome);
    EXPECT_EQ("password", result.field);

    fields.push_back({"ieee80211w", "7"});
    result = Connect("tesmir-eap", Security::kEap, fields);
    EXPECT_EQ(ConnectOutcome::kFailed, result.outcome);
    EXPECT_EQ("ieee80211w", result.field);
    EXPECT_EQ(-1, result.networkId);
    EXPECT_EQ("", Direct("LIST_NETWORKS").substr(26));  // removed: the header alone
}

TEST_F(EnterpriseTest, hidden_networks_need_scan_ssid_and_owe_connects) {
    EXPECT_EQ(ConnectOutcome::kNotFound,
              Connect("tesmir-hidden", Security::kWpa2Psk, {}, 30, kPassphrase).outcome);
    recipes::ConnectResult result =
            Connect("tesmir-hidden", Security::kWpa2Psk, {{"scan_ssid", "1"}}, 30, kPassphrase);
    EXPECT_EQ(ConnectOutcome::kConnected, result.outcome);
    EXPECT_EQ("02:00:00:00:03:00", result.bssid);

    result = Connect("tesmir-owe", Security::kOwe, {});
    EXPECT_EQ(ConnectOutcome::kConnected, result.outcome);
    EXPECT_EQ("02:00:00:00:03:01", result.bssid);
}

// Leaving a network the station was connected to is no refusal of the one it goes to. (From a
// network that left a PMKSA, OWE or EAP, a desktop build has no quiet fallback: docs/RECIPES.md.)
TEST_F(EnterpriseTest, an_eap_connect_from_another_network_connects) {
    recipes::ConnectResult result;
    ASSERT_TRUE(recipes::Connect(*client_, "tesmir-hidden", Security::kWpa2Psk, kPassphrase,
                                 {{"scan_ssid", "1"}}, kAllFreqs, &result));
    std::vector<NetworkField> peap = Peap("tesmir-password");
    EXPECT_EQ(ConnectOutcome::kConnected, Connect("tesmir-eap", Security::kEap, peap).outcome);
}

TEST_F(EnterpriseTest, a_server_that_never_answers_times_out) {
    const recipes::ConnectResult result =
            Connect("tesmir-eap-silent", Security::kEap, Peap("tesmir-password"), 10);
    EXPECT_EQ(ConnectOutcome::kTimedOut, result.outcome);
}

}  // namespace
