// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// The interface passes std::string and std::map of the platform's libc++, whose names live in
// std::__1. A host built against another standard library would still link (the factory is C and
// the methods are reached through the virtual table) and then hand the library strings of another
// layout; this stops its compile instead.

#include <string>

#define TESMIR_LIBCXX_NAMESPACE_IS___1 1
#define TESMIR_LIBCXX_NAMESPACE_IS(ns) TESMIR_LIBCXX_NAMESPACE_IS_EXPANDED(ns)
#define TESMIR_LIBCXX_NAMESPACE_IS_EXPANDED(ns) TESMIR_LIBCXX_NAMESPACE_IS_##ns

#if !defined(_LIBCPP_VERSION)
#error "libtesmirwpacliwrapper: compile this host with clang and libc++ (-stdlib=libc++): the interface is libc++'s std::__1, not libstdc++'s std"
#elif !TESMIR_LIBCXX_NAMESPACE_IS(_LIBCPP_ABI_NAMESPACE)
#error "libtesmirwpacliwrapper: compile this host against the platform's libc++: the interface is libc++'s std::__1, not the NDK's std::__ndk1 or another ABI namespace"
#endif
