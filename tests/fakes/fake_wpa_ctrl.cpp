// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/select.h>

#include <algorithm>
#include <condition_variable>
#include <memory>

#include <wpa_ctrl.h>

#include "fakes.h"

struct wpa_ctrl {
    int id;
    std::deque<std::string> events;
    bool attached = false;
};

namespace fake {
namespace {

constexpr int kFirstFd = 100;  // connection n has descriptor kFirstFd + n

struct State {
    Script script;
    std::vector<std::string> transcript;
    std::vector<std::unique_ptr<wpa_ctrl>> open;
    int lastId = 0;
    int waitingId = 0;  // the connection a select is waiting on, 0 when none
};

std::condition_variable_any& Emitted() {
    static auto* emitted = new std::condition_variable_any();
    return *emitted;
}

State& Get() {
    static auto* state = new State();
    return *state;
}

void Record(const char* op, const wpa_ctrl* ctrl, const std::string& detail = {}) {
    Get().transcript.push_back(op + (" " + std::to_string(ctrl ? ctrl->id : 0)) + detail);
}

// The next scripted value, or |otherwise| when none is left.
template <typename T>
T Next(std::deque<T>& scripted, T otherwise) {
    if (scripted.empty()) return otherwise;
    T value = scripted.front();
    scripted.pop_front();
    return value;
}

}  // namespace

Script& GetScript() {
    return Get().script;
}

std::vector<std::string>& Transcript() {
    return Get().transcript;
}

void Reset() {
    Get() = State();
}

std::recursive_mutex& Lock() {
    static auto* lock = new std::recursive_mutex();
    return *lock;
}

void SendEvent(const std::string& bytes) {
    std::lock_guard<std::recursive_mutex> hold(Lock());
    Get().open.back()->events.push_back(bytes);
}

bool Emit(const std::string& bytes) {
    std::lock_guard<std::recursive_mutex> hold(Lock());
    bool sent = false;
    for (const auto& ctrl : Get().open) {
        if (!ctrl->attached) continue;
        ctrl->events.push_back(bytes);
        sent = true;
    }
    if (sent) Emitted().notify_all();
    return sent;
}

bool AwaitEmit(std::chrono::milliseconds most) {
    // Called inside select, which holds the lock once: waiting releases it.
    return Emitted().wait_for(Lock(), most, [] {
        for (const auto& ctrl : Get().open) {
            if (ctrl->id == Get().waitingId && !ctrl->events.empty()) return true;
        }
        return false;
    });
}

int OpenConnections() {
    return static_cast<int>(Get().open.size());
}

}  // namespace fake

using fake::Get;
using fake::Record;

extern "C" {

struct wpa_ctrl* wpa_ctrl_open(const char* ctrl_path) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    if (Get().script.onOpen) Get().script.onOpen();
    wpa_ctrl* ctrl = nullptr;
    if (!fake::Next(Get().script.openFails, false)) {
        ctrl = Get().open.emplace_back(new wpa_ctrl{++Get().lastId, {}}).get();
    }
    Get().transcript.push_back(std::string("open ") + ctrl_path + " -> " +
                               (ctrl ? std::to_string(ctrl->id) : "null"));
    return ctrl;
}

void wpa_ctrl_close(struct wpa_ctrl* ctrl) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    Record("close", ctrl);
    auto& open = Get().open;
    auto it = std::find_if(open.begin(), open.end(), [&](auto& c) { return c.get() == ctrl; });
    if (it == open.end()) abort();  // not open
    open.erase(it);
}

int wpa_ctrl_attach(struct wpa_ctrl* ctrl) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    Record("attach", ctrl);
    if (ctrl != nullptr) ctrl->attached = Get().script.attachResult == 0;
    return Get().script.attachResult;
}

int wpa_ctrl_detach(struct wpa_ctrl* ctrl) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    Record("detach", ctrl);
    if (ctrl != nullptr) {
        // libwpa_client reads the reply on the connection the events come on, and drops every
        // event before it.
        ctrl->attached = false;
        ctrl->events.clear();
    }
    if (Get().script.onDetach) Get().script.onDetach();
    return 0;
}

int wpa_ctrl_request(struct wpa_ctrl* ctrl, const char* cmd, size_t cmd_len, char* reply,
                     size_t* reply_len, void (*msg_cb)(char*, size_t)) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    Record("request", ctrl,
           " " + std::string(cmd, cmd_len) + " (" + std::to_string(*reply_len) + ")" +
                   (msg_cb != nullptr ? " with a callback" : ""));
    const fake::Script& script = Get().script;
    if (script.requestResult < 0) return script.requestResult;
    const std::string answer =
            script.replyTo ? script.replyTo(std::string(cmd, cmd_len)) : script.reply;
    const size_t copied = std::min(answer.size(), *reply_len);
    // Replies are bytes, not C strings: no terminator is added, as with the real client.
    memcpy(reply, answer.data(), copied);  // NOLINT(bugprone-not-null-terminated-result)
    *reply_len = script.replyLen.value_or(copied);
    return script.requestResult;
}

int wpa_ctrl_get_fd(struct wpa_ctrl* ctrl) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    Record("get_fd", ctrl);
    return Get().script.fd.value_or(fake::kFirstFd + ctrl->id);
}

int wpa_ctrl_recv(struct wpa_ctrl* ctrl, char* reply, size_t* reply_len) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    Record("recv", ctrl, " (" + std::to_string(*reply_len) + ")");
    const int result = fake::Next(Get().script.recvResults, ctrl->events.empty() ? -1 : 0);
    // Nothing queued: a real receive would block; scripted success or not, it fails here.
    if (result < 0 || ctrl->events.empty()) return result < 0 ? result : -1;
    // One datagram, cut to the capacity offered.
    *reply_len = std::min(ctrl->events.front().size(), *reply_len);
    memcpy(reply, ctrl->events.front().data(), *reply_len);  // NOLINT(bugprone-not-null-*)
    ctrl->events.pop_front();
    return 0;
}

int wpa_ctrl_pending(struct wpa_ctrl* ctrl) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    Record("pending", ctrl);
    return fake::Next(Get().script.pendingResults, ctrl->events.empty() ? 0 : 1);
}

}  // extern "C"

// select() on an event connection, linked in its place with -Wl,--wrap=select; it never waits.
extern "C" int __wrap_select(  // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
        int nfds, fd_set* /*readfds*/, fd_set* /*writefds*/, fd_set* /*exceptfds*/,
        struct timeval* timeout) {
    std::lock_guard<std::recursive_mutex> hold(fake::Lock());
    char entry[64];
    snprintf(entry, sizeof(entry), "select %ld.%06ld", static_cast<long>(timeout->tv_sec),
             static_cast<long>(timeout->tv_usec));
    Get().transcript.emplace_back(entry);
    const auto queued = [nfds] {
        return std::any_of(Get().open.begin(), Get().open.end(), [&](const auto& c) {
            return c->id == nfds - 1 - fake::kFirstFd && !c->events.empty();
        });
    };
    if (!queued() && Get().script.onWait) {
        Get().waitingId = nfds - 1 - fake::kFirstFd;
        Get().script.onWait();
        Get().waitingId = 0;
    }
    const fake::Script::SelectStep step = fake::Next(Get().script.selectSteps, {queued() ? 1 : 0});
    // As Linux: what was not spent is written back; a time-out spends it all.
    const auto left = timeout->tv_sec * 1000000 + timeout->tv_usec - step.spentUs;
    *timeout =
            step.result == 0 || left <= 0 ? timeval{0, 0} : timeval{left / 1000000, left % 1000000};
    if (step.result < 0) errno = EINTR;
    return step.result;
}
