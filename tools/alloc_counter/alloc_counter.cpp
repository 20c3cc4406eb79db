// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "alloc_counter.h"

#include <stdlib.h>

#include <new>

namespace {

thread_local uint64_t tAllocations = 0;

}  // namespace

uint64_t AllocationCount() {
    return tAllocations;
}

// Exported, so that the shared library's allocations and libc++'s come here too. Built without
// exceptions: a failed allocation aborts, as the platform's does.
__attribute__((visibility("default"))) void* operator new(size_t size) {
    ++tAllocations;
    void* p = malloc(size == 0 ? 1 : size);
    if (p == nullptr) abort();
    return p;
}

__attribute__((visibility("default"))) void operator delete(void* p) noexcept {
    free(p);
}

__attribute__((visibility("default"))) void operator delete(void* p, size_t /*size*/) noexcept {
    free(p);
}
