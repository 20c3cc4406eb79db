// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "prompter.h"

#include <string>

namespace tesmir::recipes {
namespace {

using Clock = std::chrono::steady_clock;

// Longer than the pauses within an exchange the wait follows, so that a prompt seldom ends a
// call in the middle of one: each call more is one gap more, in which an event may be lost.
// Each prompt doubles it for the next, so that a long exchange (a slow RADIUS server) is sent
// the state five times at most, not ten times a second: the wait's call ends after 3 s anyway.
constexpr std::chrono::milliseconds kQuiet(100);

int64_t Now() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch())
            .count();
}

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
    stopped_.notify_one();
    thread_.join();
}

void Prompter::Calling(bool mayPrompt) {
    if (client_ != nullptr) since_.store(mayPrompt ? Now() : 0);
}

void Prompter::Returned() {
    if (client_ != nullptr) since_.store(0);
}

void Prompter::Run() {
    int64_t quiet = std::chrono::nanoseconds(kQuiet).count();
    std::unique_lock<std::mutex> lock(mutex_);
    int64_t prompted = 0;  // the call prompted last, by when it began
    while (!stop_) {
        const int64_t since = since_.load();
        const int64_t now = Now();
        const bool pending = since != 0 && since != prompted;
        if (pending && now - since >= quiet) {
            prompted = since;
            quiet *= 2;
            lock.unlock();
            std::string reply;
            client_->Execute("STATUS", "", reply, false);
            lock.lock();
            continue;
        }
        // Until the call under way has been quiet long enough, or a while to look again: a call
        // that began just after a look is prompted up to twice the quiet after it began.
        const int64_t wake = pending ? since + quiet : now + quiet;
        const Clock::time_point until(
                std::chrono::duration_cast<Clock::duration>(std::chrono::nanoseconds(wake)));
        stopped_.wait_until(lock, until, [this] { return stop_; });
    }
}

}  // namespace tesmir::recipes
