#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "WpaStringUtils.h"

using KeyValues = std::map<std::string, std::string>;

namespace {

KeyValues Extract(const std::string& text, KeyValues keyValues) {
    WpaStringUtils::GetKeyValues(text, keyValues);
    return keyValues;
}

TEST(strutil, key_values_take_the_word_after_the_key) {
    EXPECT_EQ((KeyValues{{"chan", "6"}, {"id", "3"}, {"name", "home"}}),
              Extract("id 3 name <home> chan 6", {{"id", ""}, {"name", ""}, {"chan", ""}}));
}

TEST(strutil, key_values_leave_unfound_keys_and_empty_maps_alone) {
    EXPECT_EQ((KeyValues{{"freq", "default"}}), Extract("id 3", {{"freq", "default"}}));
    EXPECT_EQ(KeyValues{}, Extract("id 3", {}));
    // Matched in the last field: there is no word after it.
    EXPECT_EQ((KeyValues{{"3", "default"}}), Extract("id 3", {{"3", "default"}}));
    EXPECT_EQ((KeyValues{{"", "default"}}), Extract("", {{"", "default"}}));
}

TEST(strutil, key_values_search_inside_fields_unless_anchored) {
    EXPECT_EQ((KeyValues{{"id", "00:11"}}), Extract("bssid 00:11 id 3", {{"id", ""}}));
    EXPECT_EQ((KeyValues{{"^id$", "3"}}), Extract("bssid 00:11 id 3", {{"^id$", ""}}));
    EXPECT_EQ((KeyValues{{"ssid", "next"}}), Extract("ssid=abc next", {{"ssid", ""}}));
    EXPECT_EQ((KeyValues{{"ID", "x"}}), Extract("id 3", {{"ID", "x"}}));
}

TEST(strutil, key_values_use_the_first_matching_field_for_every_key) {
    EXPECT_EQ((KeyValues{{"a", "1"}}), Extract("a 1 a 2", {{"a", ""}}));
    EXPECT_EQ((KeyValues{{"a", "b"}, {"b", "c"}}), Extract("a b c", {{"a", ""}, {"b", ""}}));
    EXPECT_EQ((KeyValues{{"^e", "f"}, {"x$", "f"}}), Extract("ex f", {{"^e", ""}, {"x$", ""}}));
    EXPECT_EQ((KeyValues{{"", "second"}}), Extract("first second", {{"", ""}}));
}

TEST(strutil, key_values_remove_angle_brackets_anywhere) {
    EXPECT_EQ((KeyValues{{"k", "abc"}}), Extract("k a<b>c", {{"k", ""}}));
    EXPECT_EQ((KeyValues{{"k", ""}}), Extract("k <><>", {{"k", "x"}}));
}

TEST(strutil, key_values_follow_split_for_word_boundaries) {
    EXPECT_EQ((KeyValues{{"a", ""}}), Extract("a ", {{"a", "x"}}));
    EXPECT_EQ((KeyValues{{"a", "1\r\n"}}), Extract("a 1\r\n", {{"a", ""}}));
    EXPECT_EQ((KeyValues{{"a", "x"}}), Extract("a\t 1", {{"a", "x"}}));
}

TEST(strutil, key_values_abort_on_a_malformed_key) {
    KeyValues keyValues = {{"(", ""}};
    EXPECT_EXIT(WpaStringUtils::GetKeyValues("a b", keyValues), ::testing::KilledBySignal(SIGABRT),
                "");
}

}  // namespace
