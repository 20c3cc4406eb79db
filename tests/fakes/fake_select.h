#pragma once

// Wraps select() (linked with -Wl,--wrap=select) to record the time-out each wait was given.

#include <sys/time.h>

#include <vector>

namespace fake {

// The time-out of every select() call since the last Reset, as it stood on entry.
std::vector<struct timeval>& SelectTimeouts();

}  // namespace fake
