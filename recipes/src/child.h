// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// The listing helper as a child process of the host: started, signalled, waited on and reaped
// through a pidfd where the kernel has one (Linux 5.3), so that a host that reaps children itself
// cannot make a stale pid reach another process; through its pid elsewhere.

#include <sys/types.h>

#include <string>
#include <vector>

namespace tesmir::recipes {

struct Child {
    pid_t pid = -1;
    int pidfd = -1;  // -1 where the kernel has none
};

// How a child ended. |known| is false when something else reaped it (a host that reaps children
// itself, or one that ignores SIGCHLD).
struct Ending {
    bool known = false;
    bool signaled = false;
    int code = 0;  // the exit status, or the signal
};

// posix_spawn, unlike fork, is safe in a host whose other threads hold locks: the child runs
// nothing of the host's before it execs, with the signal mask and handlers at their defaults.
// |in| and |out| become its standard input and output (-1: the host's input, /dev/null for
// output). Returns 0 with |child|, or the error posix_spawn gave.
int SpawnChild(const std::vector<std::string>& argv, int in, int out, Child* child);

// Waits up to |milliseconds| (forever when negative) for |child| to end, ends it (SIGKILL) when it
// has not, then reaps it and closes its pidfd.
Ending EndChild(Child* child, int milliseconds);

// libwpa_client names its client sockets wpa_ctrl_<pid>-<counter>; a helper that was ended
// could not remove its own.
void RemoveClientSockets(const std::string& dir, pid_t pid);

}  // namespace tesmir::recipes
