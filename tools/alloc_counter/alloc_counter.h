// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <stdint.h>

// Counts the calls of the global operator new made by the calling thread (the replacement is in
// alloc_counter.cpp; link the alloc_counter library to use it). Other threads' allocations, such as
// a test server's, are not counted.
uint64_t AllocationCount();
