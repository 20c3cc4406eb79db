#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "WpacliWrapper.h"
#include "lab.h"

// A client opened on a fresh real supplicant; skipped, with the reason, where no lab can be made.
class SupplicantTest : public ::testing::Test {
  protected:
    virtual bool WithAuthenticator() const { return false; }

    void SetUp() override {
        if (!SupplicantLab::Unavailable().empty()) {
            GTEST_SKIP() << "no supplicant lab here: " << SupplicantLab::Unavailable();
        }
        gTesmirLogLevel = 0x43;
        lab_ = std::make_unique<SupplicantLab>(WithAuthenticator());
        ASSERT_TRUE(lab_->ok()) << "supplicant lab did not start";
        client_.reset(GetWpacliWrapperHandle());
        ASSERT_EQ(0, client_->Open(lab_->socketPath()));
    }

    void TearDown() override {
        client_.reset();
        lab_.reset();
    }

    // Direct mode; fails the test unless the status is 0.
    std::string Direct(const std::string& command) {
        std::string response;
        EXPECT_EQ(0, client_->Execute(command, "", response, false)) << command;
        return response;
    }

    std::unique_ptr<SupplicantLab> lab_;
    std::unique_ptr<WpacliWrapper> client_;
};
