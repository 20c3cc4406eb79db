// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "bench_lab.h"

#include <fcntl.h>
#include <spawn.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <sys/select.h>
#include <sys/wait.h>
#include <unistd.h>  // environ

#include <wpa_ctrl.h>

const BenchLab* BenchLab::Get() {
    static const BenchLab* lab = []() -> const BenchLab* {
        const char* dir = getenv("TESMIR_LAB_DIR");
        if (dir == nullptr) return nullptr;
        return new BenchLab{std::string(dir) + "/ctrl/veth0", dir, "veth0"};
    }();
    return lab;
}

bool WpaCliPing(const BenchLab& lab) {
    const std::string dir = lab.socket.substr(0, lab.socket.rfind('/'));
    const char* argv[] = {"wpa_cli", "-p", dir.c_str(), "-i", lab.ifname.c_str(), "ping", nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    int status = 0;
    const bool ok = posix_spawnp(&pid, "wpa_cli", &quiet, nullptr, const_cast<char**>(argv),
                                 environ) == 0 &&
                    waitpid(pid, &status, 0) == pid && status == 0;
    posix_spawn_file_actions_destroy(&quiet);
    return ok;
}

RawClient::RawClient(const BenchLab& lab) {
    command_ = wpa_ctrl_open2(lab.socket.c_str(), lab.clientDir.c_str());
    event_ = wpa_ctrl_open2(lab.socket.c_str(), lab.clientDir.c_str());
}

RawClient::~RawClient() {
    if (command_ != nullptr) wpa_ctrl_close(command_);
    if (event_ != nullptr) wpa_ctrl_close(event_);
}

int RawClient::Direct(const char* command) {
    char reply[64];
    size_t replyLen = sizeof(reply);
    if (wpa_ctrl_attach(event_) < 0) return -1;
    const int result =
            wpa_ctrl_request(command_, command, strlen(command), reply, &replyLen, nullptr);
    wpa_ctrl_detach(event_);
    return result;
}

int RawClient::Wait(const char* command) {
    char reply[64];
    size_t replyLen = sizeof(reply);
    if (wpa_ctrl_attach(event_) < 0) return -1;
    int result = wpa_ctrl_request(command_, command, strlen(command), reply, &replyLen, nullptr);
    if (result >= 0) {
        const int fd = wpa_ctrl_get_fd(event_);
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(fd, &readable);
        struct timeval timeout = {3, 0};
        char event[512];
        size_t eventLen = sizeof(event);
        result = select(fd + 1, &readable, nullptr, nullptr, &timeout) > 0
                         ? wpa_ctrl_recv(event_, event, &eventLen)
                         : -1;
    }
    wpa_ctrl_detach(event_);
    return result;
}

int RawClient::Request(const char* command) {
    char reply[4096];
    size_t replyLen = sizeof(reply);
    return wpa_ctrl_request(command_, command, strlen(command), reply, &replyLen, nullptr);
}
