// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// The library builds with hidden visibility; only what carries this macro is exported.
#define TESMIR_EXPORT __attribute__((visibility("default")))
