// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

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
// nothing; a desktop build sends nothing on STATUS, and then neither does it.
class Prompter {
  public:
    explicit Prompter(WpacliWrapper* client);
    ~Prompter();
    Prompter(const Prompter&) = delete;
    Prompter& operator=(const Prompter&) = delete;

    // Around each call of the wait: one that |mayPrompt| is prompted once, after kQuiet.
    void Calling(bool mayPrompt);
    void Returned();

  private:
    void Run();

    WpacliWrapper* const client_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool stop_ = false;
    bool calling_ = false;  // a call that may be prompted is under way
    uint64_t call_ = 0;     // counts the calls
    std::chrono::steady_clock::time_point since_;
    std::thread thread_;
};

}  // namespace tesmir::recipes
