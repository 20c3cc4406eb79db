// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "prompter.h"

#include <string>

namespace tesmir::recipes {
namespace {

// Longer than the pauses within an exchange the wait follows, so that a prompt seldom ends a
// call in the middle of one: each call more is one gap more, in which an event may be lost.
constexpr std::chrono::milliseconds kQuiet(100);

}  // namespace

Prompter::Prompter(WpacliWrapper* client) : client_(client) {
    if (client_ != nullptr) thread_ = std::thread(&Prompter::Run, this);
}

Prompter::~Prompter() {
    if (client_ == nullptr) return;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stop_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Prompter::Calling(bool mayPrompt) {
    if (client_ == nullptr) return;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++call_;
        calling_ = mayPrompt;
        since_ = std::chrono::steady_clock::now();
    }
    changed_.notify_one();
}

void Prompter::Returned() {
    if (client_ == nullptr) return;
    std::lock_guard<std::mutex> lock(mutex_);
    calling_ = false;
}

void Prompter::Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    uint64_t prompted = 0;
    while (!stop_) {
        if (!calling_ || call_ == prompted) {
            changed_.wait(lock);
            continue;
        }
        const uint64_t call = call_;
        const auto moved = [this, call] { return stop_ || !calling_ || call_ != call; };
        if (changed_.wait_until(lock, since_ + kQuiet, moved)) continue;
        prompted = call;
        lock.unlock();
        std::string reply;
        client_->Execute("STATUS", "", reply, false);
        lock.lock();
    }
}

}  // namespace tesmir::recipes
