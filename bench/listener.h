// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

struct wpa_ctrl;

// A client of libwpa_client's own, attached from start to end, that keeps every event and when
// it came: what a host that listens all along would know, and when. It can also ask the
// supplicant something the moment an awaited event comes: when a client that must then make one
// exchange (as every call of the library ends with its detach) could know at the earliest.
class Listener {
  public:
    using Clock = std::chrono::steady_clock;
    Listener(const std::string& socket, const std::string& dir);
    ~Listener();
    bool ok() const { return thread_.joinable(); }

    // When the first event matching |pattern| came at or after |since|; waits up to 2 s for it.
    bool First(const std::regex& pattern, Clock::time_point since, Clock::time_point* when);
    // The events received since the last call, |*seen| of them before it; updates |*seen|.
    std::vector<std::string> Events(size_t* seen);

    // The next event matching |pattern| is followed at once by PING on a connection of the
    // listener's own; Answered() tells when the reply came, waiting up to 2 s for it.
    void Probe(const std::regex& pattern);
    bool Answered(Clock::time_point* when);

  private:
    void Listen();
    // Whether |found|, called with the lock held, holds within 2 s.
    bool Within2s(const std::function<bool()>& found);

    wpa_ctrl* ctrl_;
    wpa_ctrl* probe_;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    std::mutex mutex_;
    std::vector<std::pair<Clock::time_point, std::string>> events_;
    bool armed_ = false;
    std::regex probePattern_;
    std::optional<Clock::time_point> answered_;
};
