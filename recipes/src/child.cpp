// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "child.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#ifndef P_PIDFD
#define P_PIDFD 3  // waitid's pidfd type, Linux 5.4; older C library headers lack it
#endif

namespace tesmir::recipes {
namespace {

int PidfdOpen(pid_t pid) {
#ifdef SYS_pidfd_open
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
#else
    (void)pid;
    errno = ENOSYS;
    return -1;
#endif
}

Ending FromStatus(int status) {
    Ending ending;
    ending.known = true;
    ending.signaled = WIFSIGNALED(status);
    ending.code = ending.signaled ? WTERMSIG(status) : WEXITSTATUS(status);
    return ending;
}

void KillChild(const Child& child) {
#ifdef SYS_pidfd_send_signal
    if (child.pidfd >= 0) {
        syscall(SYS_pidfd_send_signal, child.pidfd, SIGKILL, nullptr, 0);
        return;
    }
#endif
    kill(child.pid, SIGKILL);
}

// Waits up to |milliseconds| (forever when negative) for |child| to end, then reaps it and
// closes its pidfd. False, with |child| untouched, when it still runs.
bool ReapChild(Child* child, int milliseconds, Ending* ending) {
    *ending = Ending();
    if (child->pidfd >= 0) {
        // Readable once the child has ended, reaped or not.
        pollfd ended = {child->pidfd, POLLIN, 0};
        int ready;
        while ((ready = poll(&ended, 1, milliseconds)) < 0 && errno == EINTR) {
        }
        if (ready == 0) return false;
        siginfo_t info = {};
        int reaped;
        while ((reaped = waitid(static_cast<idtype_t>(P_PIDFD), static_cast<id_t>(child->pidfd),
                                &info, WEXITED)) < 0 &&
               errno == EINTR) {
        }
        if (reaped == 0) {
            ending->known = true;
            ending->signaled = info.si_code == CLD_KILLED || info.si_code == CLD_DUMPED;
            ending->code = info.si_status;
        }
        close(child->pidfd);
        child->pidfd = -1;
        return true;
    }
    const auto deadline =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        int status = 0;
        const pid_t reaped = waitpid(child->pid, &status, milliseconds < 0 ? 0 : WNOHANG);
        if (reaped == child->pid) {
            *ending = FromStatus(status);
            return true;
        }
        if (reaped < 0 && errno != EINTR) return true;  // reaped by someone else
        if (reaped == 0) {
            if (std::chrono::steady_clock::now() >= deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
}

}  // namespace

int SpawnChild(const std::vector<std::string>& argv, int in, int out, Child* child) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attr;
    posix_spawn_file_actions_init(&actions);
    if (in >= 0) posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
    if (out >= 0) {
        posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    // The host's blocked and ignored signals are not the helper's.
    posix_spawnattr_init(&attr);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setsigdefault(&attr, &all);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::vector<std::string> words = argv;
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const int error =
            posix_spawn(&child->pid, words[0].c_str(), &actions, &attr, pointers.data(), environ);
    posix_spawnattr_destroy(&attr);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) return error;
    child->pidfd = PidfdOpen(child->pid);  // close-on-exec, as pidfd_open makes it
    return 0;
}

Ending EndChild(Child* child, int milliseconds) {
    Ending ending;
    if (!ReapChild(child, milliseconds, &ending)) {
        KillChild(*child);
        ReapChild(child, -1, &ending);
    }
    return ending;
}

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

}  // namespace tesmir::recipes
