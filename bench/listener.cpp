// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "listener.h"

#include <poll.h>

#include <algorithm>

#include <wpa_ctrl.h>

Listener::Listener(const std::string& socket, const std::string& dir)
    : ctrl_(wpa_ctrl_open2(socket.c_str(), dir.c_str())),
      probe_(wpa_ctrl_open2(socket.c_str(), dir.c_str())) {
    if (ctrl_ == nullptr || probe_ == nullptr || wpa_ctrl_attach(ctrl_) != 0) return;
    thread_ = std::thread([this] { Listen(); });
}

Listener::~Listener() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    if (ctrl_ != nullptr) wpa_ctrl_close(ctrl_);
    if (probe_ != nullptr) wpa_ctrl_close(probe_);
}

void Listener::Probe(const std::regex& pattern) {
    std::lock_guard<std::mutex> lock(mutex_);
    probePattern_ = pattern;
    armed_ = true;
    answered_.reset();
}

bool Listener::Answered(Clock::time_point* when) {
    return Within2s([&] {
        if (answered_) *when = *answered_;
        return answered_.has_value();
    });
}

bool Listener::First(const std::regex& pattern, Clock::time_point since, Clock::time_point* when) {
    return Within2s([&] {
        const auto it = std::find_if(events_.begin(), events_.end(), [&](const auto& e) {
            return e.first >= since && std::regex_search(e.second, pattern);
        });
        if (it != events_.end()) *when = it->first;
        return it != events_.end();
    });
}

bool Listener::Within2s(const std::function<bool()>& found) {
    for (int i = 0; i < 200; ++i) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (found()) return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

std::vector<std::string> Listener::Events(size_t* seen) {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<std::string> events;
    for (; *seen < events_.size(); ++*seen) events.push_back(events_[*seen].second);
    return events;
}

void Listener::Listen() {
    pollfd fd = {wpa_ctrl_get_fd(ctrl_), POLLIN, 0};
    while (!stop_) {
        if (poll(&fd, 1, 50) != 1) continue;
        char buffer[4096];
        size_t length = sizeof(buffer);
        if (wpa_ctrl_recv(ctrl_, buffer, &length) != 0) continue;
        const Clock::time_point now = Clock::now();
        std::string event(buffer, length);
        std::unique_lock<std::mutex> lock(mutex_);
        const bool probe = armed_ && std::regex_search(event, probePattern_);
        events_.emplace_back(now, std::move(event));
        if (!probe) continue;
        armed_ = false;
        lock.unlock();
        char reply[64];
        size_t replyLength = sizeof(reply);
        const bool ok = wpa_ctrl_request(probe_, "PING", 4, reply, &replyLength, nullptr) == 0;
        lock.lock();
        if (ok) answered_ = Clock::now();
    }
}
