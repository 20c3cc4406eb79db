// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// The supplicant the benchmarks talk to: the lab scripts/supplicant-lab.sh started, named by
// TESMIR_LAB_DIR (control socket TESMIR_LAB_DIR/ctrl/veth0). Raw libwpa_client connections bind
// their client sockets there, never in /tmp, where the library's own copy of libwpa_client names
// its sockets with a counter of its own.

#include <string>

struct wpa_ctrl;

struct BenchLab {
    std::string socket;
    std::string clientDir;
    std::string ifname;  // the interface the socket is named after, for wpa_cli

    // Null when the environment names no supplicant.
    static const BenchLab* Get();
};

// Runs "wpa_cli ping" on the lab's socket as a process, as hosts without the library do.
// Returns true when it exited 0.
bool WpaCliPing(const BenchLab& lab);

// The raw client doing what Execute does, with nothing else around it.
class RawClient {
  public:
    explicit RawClient(const BenchLab& lab);
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool ok() const { return command_ != nullptr && event_ != nullptr; }
    // attach, request (64-byte reply buffer), detach. Returns the request's result.
    int Direct(const char* command);
    // attach, request, select on the event connection (3 s), receive one event, detach.
    int Wait(const char* command);
    // A request on the command connection only, with a large buffer (housekeeping).
    int Request(const char* command);

  private:
    struct wpa_ctrl* command_ = nullptr;
    struct wpa_ctrl* event_ = nullptr;
};
