#include <errno.h>
#include <stdio.h>
#include <sys/select.h>

#include "fakes.h"

// The name is fixed by the linker's --wrap; nothing here waits for real.
extern "C" int __wrap_select(  // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
        int nfds, fd_set* /*readfds*/, fd_set* /*writefds*/, fd_set* /*exceptfds*/,
        struct timeval* timeout) {
    char entry[64];
    snprintf(entry, sizeof(entry), "select %ld.%06ld", static_cast<long>(timeout->tv_sec),
             static_cast<long>(timeout->tv_usec));
    fake::Transcript().push_back(entry);
    auto& steps = fake::GetScript().selectSteps;
    fake::Script::SelectStep step = {fake::EventQueued(nfds - 1) ? 1 : 0};
    if (!steps.empty()) {
        step = steps.front();
        steps.pop_front();
    }
    // As Linux: what was not spent is written back; a time-out spends it all.
    const long left = timeout->tv_sec * 1000000 + timeout->tv_usec - step.spentUs;
    *timeout =
            step.result == 0 || left <= 0 ? timeval{0, 0} : timeval{left / 1000000, left % 1000000};
    if (step.result < 0) errno = EINTR;
    return step.result;
}
