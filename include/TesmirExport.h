#pragma once

// The library builds with hidden visibility; only what carries this macro is exported.
#define TESMIR_EXPORT __attribute__((visibility("default")))
