#include "fake_select.h"

#include <sys/select.h>

extern "C" int __real_select(int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds,
                             struct timeval* timeout);

namespace fake {

std::vector<struct timeval>& SelectTimeouts() {
    static auto* timeouts = new std::vector<struct timeval>();
    return *timeouts;
}

}  // namespace fake

extern "C" int __wrap_select(int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds,
                             struct timeval* timeout) {
    if (timeout != nullptr) fake::SelectTimeouts().push_back(*timeout);
    return __real_select(nfds, readfds, writefds, exceptfds, timeout);
}
