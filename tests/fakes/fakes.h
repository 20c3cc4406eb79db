// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// Link-time stand-ins for libwpa_client, liblog's __android_log_print and select() (linked with
// -Wl,--wrap=select). Whatever they are called with goes, in order, into one transcript:
//   open /path -> 1      close 1      attach 2      detach 2      get_fd 2      pending 2
//   request 1 STATUS (64)            recv 2 (512)                 select 3.000000
//   D [Open:N] >>        I [Open] /path interface opened\n        E [Execute] Unable to ...
// Connections are numbered from 1 as they are opened (0 is null); the number in parentheses is
// the capacity offered; log lines start with their priority's letter, and the line of a
// "[name:line]" prefix shows as N. Events are datagrams queued on the connection opened last: a
// receive takes one and drops what does not fit, as a datagram socket does, and a detach drops
// what is left, as libwpa_client does while it reads the detach's reply. SendEvent() queues one
// whatever the connection's state; Emit() is the supplicant sending one, which every attached
// connection gets. One lock guards them all, so that clients on two threads may share them.

#include <stddef.h>

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace fake {

struct Script {
    std::deque<bool> openFails;  // one per wpa_ctrl_open; true returns null
    int attachResult = 0;
    int requestResult = 0;
    std::string reply = "OK\n";  // copied into the reply buffer, up to its capacity
    // When set, the reply to each command instead: a supplicant whose state a test keeps.
    std::function<std::string(const std::string& command)> replyTo;
    std::optional<size_t> replyLen;  // reported reply length; default: the bytes copied
    std::deque<int> recvResults;     // one per recv; a negative one fails it
    std::deque<int> pendingResults;  // one per pending; else whether an event is queued
    std::optional<int> fd;           // what wpa_ctrl_get_fd gives instead
    std::function<void()> onOpen;    // runs inside every wpa_ctrl_open
    std::function<void()> onDetach;  // runs inside every wpa_ctrl_detach, once detached
    // Runs inside a select() that finds no event queued, before it decides: the supplicant going
    // on while a client waits.
    std::function<void()> onWait;
    bool lineNumbers = false;  // log lines keep "[name:line]" as written

    // One per select(): ready (> 0) after |spentUs| of the time-out, timed out (0), or failed
    // with EINTR (< 0). Without one: ready at once when an event is queued, else timed out.
    struct SelectStep {
        int result;
        long spentUs = 0;
    };
    std::deque<SelectStep> selectSteps;
};

Script& GetScript();
std::vector<std::string>& Transcript();
// Forgets every connection, the transcript and the script.
void Reset();
// Queues one event on the connection opened last (an open client's event connection).
void SendEvent(const std::string& bytes);
// The supplicant sends an event: queued on every attached connection; false when none is.
bool Emit(const std::string& bytes);
// For Script::onWait: blocks, the lock released, until an event is queued for the waiting select
// or |most| passed; whether one was.
bool AwaitEmit(std::chrono::milliseconds most);
int OpenConnections();
// Held by every stand-in while it runs.
std::recursive_mutex& Lock();

}  // namespace fake
