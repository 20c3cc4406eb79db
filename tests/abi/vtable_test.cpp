// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The shared library as hosts compiled against its header see it: the table of virtual operations
// read from the built library by symbol, and the object's layout.

#include <dlfcn.h>

#include <gtest/gtest.h>

#include "WpacliWrapper.h"

namespace {

// The table pointer, then the command and the event connection.
static_assert(sizeof(WpacliWrapper) == 3 * sizeof(void*));

void* Symbol(const char* name) {
    void* address = dlsym(RTLD_DEFAULT, name);
    EXPECT_NE(nullptr, address) << name;
    return address;
}

TEST(abi, virtual_table_slots_are_destructors_open_close_execute) {
    // The exported table: offset to top, typeinfo, then the slots.
    auto* const* table = static_cast<void* const*>(Symbol("_ZTV13WpacliWrapper"));
    ASSERT_NE(nullptr, table);
    EXPECT_EQ(nullptr, table[0]);
    EXPECT_EQ(Symbol("_ZTI13WpacliWrapper"), table[1]);
    const char* const slots[] = {
            "_ZN13WpacliWrapperD1Ev",
            "_ZN13WpacliWrapperD0Ev",
            "_ZN13WpacliWrapper4OpenERKNSt3__112basic_stringIcNS0_11char_traitsIcEENS0_"
            "9allocatorIcEEEE",
            "_ZN13WpacliWrapper5CloseEv",
            "_ZN13WpacliWrapper7ExecuteERKNSt3__112basic_stringIcNS0_11char_traitsIcEENS0_"
            "9allocatorIcEEEES8_RS6_b",
    };
    for (size_t slot = 0; slot < std::size(slots); ++slot) {
        EXPECT_EQ(Symbol(slots[slot]), table[2 + slot]) << "slot " << slot;
    }
    // A new client points at that table, with both connections null behind it.
    WpacliWrapper* client = GetWpacliWrapperHandle();
    auto* const* object = reinterpret_cast<void* const*>(client);
    EXPECT_EQ(&table[2], object[0]);
    EXPECT_EQ(nullptr, object[1]);
    EXPECT_EQ(nullptr, object[2]);
    delete client;
}

}  // namespace
