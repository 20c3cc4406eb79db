#pragma once

#include <signal.h>

// The signal a trapping sanitizer check raises. The platform build points the trap at abort();
// elsewhere it is ud2 on x86-64 and brk on arm64.
#if defined(__ANDROID__)
constexpr int kTrapSignal = SIGABRT;
#elif defined(__aarch64__)
constexpr int kTrapSignal = SIGTRAP;
#else
constexpr int kTrapSignal = SIGILL;
#endif
