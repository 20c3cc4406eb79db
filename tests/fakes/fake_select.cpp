#include "fake_select.h"

#include <sys/select.h>

// Names fixed by the linker's --wrap.
extern "C" int __real_select(  // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
        int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds, struct timeval* timeout);

namespace fake {

std::vector<struct timeval>& SelectTimeouts() {
    static auto* timeouts = new std::vector<struct timeval>();
    return *timeouts;
}

}  // namespace fake

extern "C" int __wrap_select(  // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
        int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds, struct timeval* timeout) {
    if (timeout != nullptr) fake::SelectTimeouts().push_back(*timeout);
    return __real_select(nfds, readfds, writefds, exceptfds, timeout);
}
