// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// SSIDs as the air brings them (scripts/radio-lab.sh run -a hostile): names that pass for events
// and fields, quotes, '=', backslashes and spaces, and 32 bytes of UTF-8. The recipes must connect
// with the right passphrase, never with a wrong one, and list every name as its bytes.

#include <map>
#include <string>
#include <vector>

#include "radio_fixture.h"

namespace {

using radio::kPassphrase;
using radio::RadioTest;
using recipes::Security;

constexpr const char* kEventName = "CTRL-EVENT-CONNECTED";
constexpr const char* kUtf8 =
        "Caf\xc3\xa9 \xe2\x98\x95 \xe6\x9d\xb1\xe4\xba\xac\xe3\x81\xae"
        "\xe7\x84\xa1\xe7\xb7\x9aLAN-\xce\xa9!";

struct Ap {
    const char* bssid;
    const char* ssid;
    const char* freq;
};
const Ap kAps[] = {
        {"02:00:00:00:01:00", kEventName, "2412"},
        {"02:00:00:00:01:01", "x\" state=9 BSSID=1", "2412"},
        {"02:00:00:00:02:00", kEventName, "2437"},
        {"02:00:00:00:02:01", R"(k=v "q" \ e)", "2437"},
        {"02:00:00:00:03:00", kUtf8, "2462"},
        {"02:00:00:00:04:00", "CTRL-EVENT-STATE-CHANGE state=9", "2462"},
};

class HostileTest : public RadioTest {
  protected:
    void SetUp() override {
        RadioTest::SetUp();
        if (!IsSkipped()) RequireLayout("hostile");
    }

    void Reset() {
        ASSERT_TRUE(recipes::Forget(*client_));
        ASSERT_EQ("OK\n", Raw("BSSID_IGNORE clear"));
    }
};

TEST_F(HostileTest, connects_with_the_right_passphrase_only) {
    for (const Ap& ap : kAps) {
        if (ap.bssid == kAps[2].bssid) continue;  // kAps[0]'s name, on another channel
        SCOPED_TRACE(ap.bssid);
        std::string bssid;
        EXPECT_FALSE(recipes::Connect(*client_, ap.ssid, Security::kWpa2Psk, "wrong-passphrase",
                                      ap.freq, &bssid));
        EXPECT_FALSE(recipes::CurrentBssid(*client_, nullptr));
        Reset();
        EXPECT_TRUE(recipes::Connect(*client_, ap.ssid, Security::kWpa2Psk, kPassphrase, ap.freq,
                                     &bssid));
        EXPECT_EQ(ap.bssid, bssid);
        Reset();
    }
}

TEST_F(HostileTest, roams_between_access_points_named_like_an_event) {
    ExpectConnectAndRoam(kEventName, kAps[0].bssid, kAps[2].bssid);
}

// The SSID element keeps spaces, quotes and bytes past ASCII; a long one comes cut, and says so.
TEST_F(HostileTest, lists_every_name_as_its_bytes) {
    ASSERT_TRUE(recipes::Scan(*client_, "2412,2437,2462"));
    std::vector<recipes::Bss> found;
    ASSERT_TRUE(recipes::ListNetworks(*client_, &found));
    std::map<std::string, recipes::Bss> byBssid;
    for (const recipes::Bss& bss : found) byBssid[bss.bssid] = bss;
    for (const Ap& ap : kAps) {
        SCOPED_TRACE(ap.bssid);
        ASSERT_EQ(1u, byBssid.count(ap.bssid));
        const recipes::Bss& bss = byBssid[ap.bssid];
        EXPECT_EQ(strlen(ap.ssid), bss.ssidLength);
        EXPECT_TRUE(recipes::SsidCanBe(bss, ap.ssid));
        EXPECT_FALSE(recipes::SsidCanBe(bss, std::string(ap.ssid) + "x"));
        if (bss.ssidWhole) EXPECT_EQ(ap.ssid, bss.ssid);
    }
    const recipes::Bss& utf8 = byBssid[kAps[4].bssid];
    EXPECT_FALSE(utf8.ssidWhole);
    EXPECT_EQ(std::string(kUtf8).substr(0, utf8.ssid.size()), utf8.ssid);
    EXPECT_GE(utf8.ssid.size(), 24u);
    // What the supplicant prints of it, decoded: its bytes, cut in an escape, spaces removed.
    std::string printed;
    ASSERT_EQ(0, client_->Execute("BSS " + std::string(kAps[4].bssid) + " MASK=0x1000", "", printed,
                                  false));
    ASSERT_EQ(0u, printed.rfind("ssid=Caf\\xc3\\xa9\\xe2", 0)) << printed;
    EXPECT_EQ("Caf\xc3\xa9\xe2\x98\x95", recipes::DecodeSsid(printed.substr(5)).substr(0, 8));
}

}  // namespace
