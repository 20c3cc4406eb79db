// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "TesmirRecipes.h"
#include "bss_lines.h"

namespace tesmir::recipes {
namespace {

enum class Outcome { kListed, kEnded, kHung, kFailed, kNotStarted };

// How a child that could not run ends where posix_spawn does not report it, and how the dynamic
// linker ends one it cannot load; tesmir-list-helper never exits with it.
constexpr int kCannotRun = 127;

using Clock = std::chrono::steady_clock;

// Reads |fd| to its end into |out|; false when |deadline| came first, or reading failed: the
// helper may still be running, and is ended rather than waited for.
bool ReadAll(int fd, Clock::time_point deadline, std::string* out) {
    char buffer[4096];
    for (;;) {
        const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return false;
        pollfd readable = {fd, POLLIN, 0};
        const int ready = poll(&readable, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno != EINTR) return false;
        if (ready <= 0) continue;
        const ssize_t n = read(fd, buffer, sizeof(buffer));
        if (n == 0) return true;
        if (n < 0 && errno != EINTR && errno != EAGAIN) return false;
        if (n > 0) out->append(buffer, static_cast<size_t>(n));
    }
}

// libwpa_client names its client sockets wpa_ctrl_<pid>-<counter>; a helper that was ended
// could not remove its own.
void RemoveClientSockets(const std::string& dir, pid_t pid) {
    const std::string prefix = "wpa_ctrl_" + std::to_string(pid) + "-";
    DIR* d = opendir(dir.c_str());
    if (d == nullptr) return;
    while (const dirent* entry = readdir(d)) {
        if (strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0) {
            unlinkat(dirfd(d), entry->d_name, 0);
        }
    }
    closedir(d);
}

// posix_spawn, unlike fork, is safe in a host whose other threads hold locks: the child runs
// nothing of the host's before it execs. Returns 0 with |pid|, or the error posix_spawn gave.
int Spawn(const Isolation& isolation, const std::string& socket, int out, pid_t* pid) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attr;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    // The host's blocked and ignored signals are not the helper's.
    posix_spawnattr_init(&attr);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setsigdefault(&attr, &all);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::string helper = isolation.helper;
    std::string path = socket;
    char* argv[] = {helper.data(), path.data(), nullptr};
    const int error = posix_spawn(pid, helper.c_str(), &actions, &attr, argv, environ);
    posix_spawnattr_destroy(&attr);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

// Puts what kept the helper from starting in |startError| when the outcome is kNotStarted.
Outcome RunHelper(const Isolation& isolation, const std::string& socket, std::vector<Bss>* found,
                  int* startError) {
    int pipe_fds[2];
    if (pipe2(pipe_fds, O_CLOEXEC) != 0) return Outcome::kFailed;
    pid_t pid = -1;
    *startError = Spawn(isolation, socket, pipe_fds[1], &pid);
    close(pipe_fds[1]);
    if (*startError != 0) {
        close(pipe_fds[0]);
        return Outcome::kNotStarted;
    }
    std::string output;
    const bool hung = !ReadAll(
            pipe_fds[0], Clock::now() + std::chrono::milliseconds(isolation.milliseconds), &output);
    close(pipe_fds[0]);
    if (hung) kill(pid, SIGKILL);
    int status = 0;
    pid_t reaped;
    while ((reaped = waitpid(pid, &status, 0)) < 0 && errno == EINTR) {
    }
    RemoveClientSockets(isolation.clientDir, pid);
    if (hung) return Outcome::kHung;
    if (reaped != pid) return Outcome::kFailed;
    if (WIFSIGNALED(status)) return Outcome::kEnded;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kCannotRun && output.empty()) {
        *startError = access(isolation.helper.c_str(), X_OK) == 0 ? ENOEXEC : errno;
        return Outcome::kNotStarted;
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return Outcome::kFailed;
    return ParseBssLines(output, found) ? Outcome::kListed : Outcome::kFailed;
}

}  // namespace

bool ListNetworksIsolated(const std::string& socket, std::vector<Bss>* found, ListingReport* report,
                          const Isolation& isolation) {
    *report = ListingReport();
    while (report->helpers < isolation.attempts) {
        ++report->helpers;
        int startError = 0;
        switch (RunHelper(isolation, socket, found, &startError)) {
            case Outcome::kListed:
                return true;
            case Outcome::kEnded:
                ++report->ended;
                break;
            case Outcome::kHung:
                ++report->hung;
                break;
            case Outcome::kFailed:
                ++report->failed;
                break;
            case Outcome::kNotStarted:
                ++report->failed;
                report->startError = startError;
                report->startPath = isolation.helper;
                found->clear();
                return false;
        }
    }
    found->clear();
    return false;
}

}  // namespace tesmir::recipes
