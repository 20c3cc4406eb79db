// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "WpacliWrapper.h"

namespace tesmir::recipes {

// Ends a wait's call that has heard nothing for a while, through a second client open on the
// same socket: its STATUS, on a build as devices build it, sends the state to every attached
// client, the waiting call's included. Events that came between two of the wait's calls are lost
// to it, and a call after them would otherwise wait out its 3 s. Without a client it does
// nothing. A desktop build sends nothing on STATUS: its waits have no call prompted.
class Prompter {
  public:
    explicit Prompter(WpacliWrapper* client);
    ~Prompter();
    Prompter(const Prompter&) = delete;
    Prompter& operator=(const Prompter&) = delete;

    // Around each call of a wait: one that |mayPrompt| is prompted once, after a quiet while. They
    // wake nothing: on one CPU, a thread woken at each call widened the gaps between calls.
    void Calling(bool mayPrompt);
    void Returned();

  private:
    void Run();

    WpacliWrapper* const client_;
    // When the call under way that may be prompted began (steady clock, ns); 0 when none.
    std::atomic<int64_t> since_{0};
    std::mutex mutex_;
    std::condition_variable stopped_;
    bool stop_ = false;
    std::thread thread_;
};

}  // namespace tesmir::recipes
