// The table of virtual operations as hosts see it: read from the built library by symbol, the way
// a host compiled against an older header would call through it.

#include <dlfcn.h>

#include <type_traits>

#include <gtest/gtest.h>

#include "WpacliWrapper.h"

namespace {

// Copies (and so moves) would close both connections twice.
static_assert(!std::is_copy_constructible_v<WpacliWrapper>);
static_assert(!std::is_move_constructible_v<WpacliWrapper>);
static_assert(!std::is_copy_assignable_v<WpacliWrapper>);
static_assert(!std::is_move_assignable_v<WpacliWrapper>);

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
}

TEST(abi, object_is_its_table_pointer_and_two_connection_handles) {
    EXPECT_EQ(3 * sizeof(void*), sizeof(WpacliWrapper));
    WpacliWrapper* client = GetWpacliWrapperHandle();
    EXPECT_EQ(Symbol("_ZTV13WpacliWrapper"),
              static_cast<void*>(*reinterpret_cast<void***>(client) - 2));
    const auto* handles = reinterpret_cast<void* const*>(client) + 1;
    EXPECT_EQ(nullptr, handles[0]);
    EXPECT_EQ(nullptr, handles[1]);
    delete client;
}

}  // namespace
