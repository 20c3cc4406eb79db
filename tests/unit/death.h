#pragma once

#include <signal.h>

// The signal a -fsanitize-trap check raises: ud2 on x86-64, brk on arm64.
#if defined(__aarch64__)
constexpr int kTrapSignal = SIGTRAP;
#else
constexpr int kTrapSignal = SIGILL;
#endif
