// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Roams that say how they moved (scripts/radio-lab.sh run -a roaming): FT over the air and over
// the DS, an 802.1X network's first roam and its return on a cached PMK, a PSK network's
// handshake. On the simulated clock each is told, but FT on a desktop build and a cached PMK
// whose handshake came after the association's call; never a wrong way.

#include <stdlib.h>

#include <string>
#include <vector>

#include "radio_fixture.h"

namespace {

using radio::kPassphrase;
using radio::RadioTest;
using recipes::NetworkField;
using recipes::RoamVia;
using recipes::Security;

class RoamingTest : public RadioTest {
  protected:
    void SetUp() override {
        RadioTest::SetUp();
        if (IsSkipped()) return;
        RequireLayout("roaming");
    }

    // FT as a build that sends states tells it; a desktop build cannot tell it from a handshake.
    RoamVia Ft(RoamVia via) const { return device_ ? via : RoamVia::kUnknown; }

    // Joins |ssid| on |freqs|; returns the BSSID joined.
    std::string Join(const std::string& ssid, Security security, const std::string& freqs,
                     const std::vector<NetworkField>& fields) {
        recipes::ConnectResult result;
        EXPECT_TRUE(
                recipes::Connect(*client_, ssid, security, kPassphrase, fields, freqs, &result));
        return result.bssid;
    }
};

TEST_F(RoamingTest, ft_over_the_air_and_over_the_ds_are_told_on_a_device_build) {
    const std::vector<NetworkField> ft = {{"key_mgmt", "FT-PSK"}};
    const std::string a = Join("tesmir-ft", Security::kWpa2Psk, "2412 2437", ft);
    const std::string b = a == "02:00:00:00:01:00" ? "02:00:00:00:02:00" : "02:00:00:00:01:00";
    ExpectRoam(b, false, Ft(RoamVia::kFt));
    ExpectRoam(a, false, Ft(RoamVia::kFt));

    const std::string c = Join("tesmir-ft-ds", Security::kWpa2Psk, "2462", ft);
    const std::string d = c == "02:00:00:00:03:00" ? "02:00:00:00:04:00" : "02:00:00:00:03:00";
    ExpectRoam(d, true, Ft(RoamVia::kFtOverDs));
    // Over the air when not asked for the DS, on the same network.
    ExpectRoam(c, false, Ft(RoamVia::kFt));
}

TEST_F(RoamingTest, eap_roams_fully_then_on_the_cached_pmk_and_psk_roams_fully) {
    const std::string certs = getenv("TESMIR_LAB_CERTS");
    const std::string a = Join("tesmir-eap", Security::kEap, "2412 2437",
                               {{"eap", "PEAP"},
                                {"identity", "tesmir-user"},
                                {"password", "tesmir-password"},
                                {"phase2", "auth=MSCHAPV2"},
                                {"ca_cert", certs + "/ca.pem"}});
    const std::string b = a == "02:00:00:00:01:01" ? "02:00:00:00:02:01" : "02:00:00:00:01:01";
    ExpectRoam(b, false, RoamVia::kFull);
    // Back where the station holds a PMK, and again: no EAP. Told only when the handshake comes
    // in the association's call.
    ExpectRoam(a, false, RoamVia::kCached, true);
    ExpectRoam(b, false, RoamVia::kCached, true);

    const std::string c = Join("tesmir-psk", Security::kWpa2Psk, "2462", {});
    ExpectRoam(c == "02:00:00:00:03:01" ? "02:00:00:00:04:01" : "02:00:00:00:03:01", false,
               RoamVia::kFull);
}

}  // namespace
