#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "WpacliWrapper.h"
#include "fake_android_log.h"
#include "fake_select.h"
#include "fake_wpa_ctrl.h"

// A fresh client over the fakes, with every recording cleared and the mask at its default.
class ClientTest : public ::testing::Test {
  protected:
    static constexpr const char* kPath = "/data/vendor/wifi/wpa/sockets/wlan0";
    static constexpr uint32_t kAllBits = 0xffffffff;

    void SetUp() override {
        fake::Reset();
        fake::Logs().clear();
        fake::SelectTimeouts().clear();
        gTesmirLogLevel = 0x43;
        client_ = GetWpacliWrapperHandle();
    }

    void TearDown() override {
        delete client_;
        gTesmirLogLevel = 0x43;
    }

    // Opens the client and forgets what that recorded, so a test sees only its own calls.
    void OpenClient() {
        ASSERT_EQ(0, client_->Open(kPath));
        fake::ClearCalls();
        fake::Logs().clear();
    }

    static std::vector<std::string> LogTexts() {
        std::vector<std::string> texts;
        for (const fake::LogEntry& entry : fake::Logs()) texts.push_back(entry.text);
        return texts;
    }

    // The log texts with the line numbers of "[name:line]" prefixes blanked out, for order checks.
    static std::vector<std::string> LogShapes() {
        std::vector<std::string> shapes;
        for (const fake::LogEntry& entry : fake::Logs()) {
            std::string text = entry.text;
            const size_t colon = text.find(':');
            const size_t close = text.find(']');
            if (text[0] == '[' && colon != std::string::npos && close != std::string::npos &&
                colon < close) {
                text.replace(colon + 1, close - colon - 1, "N");
            }
            shapes.push_back(text);
        }
        return shapes;
    }

    WpacliWrapper* client_ = nullptr;
};
