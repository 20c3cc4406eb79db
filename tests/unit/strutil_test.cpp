// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "WpaStringUtils.h"

using namespace std::string_literals;
using ::testing::ElementsAre;
using Fields = std::vector<std::string>;
using KeyValues = std::map<std::string, std::string>;

namespace {

TEST(strutil, strip_removes_every_occurrence_in_both_forms) {
    struct Case {
        std::string input;
        std::string set;  // one byte: also run through the forms that take a character
        std::string output;
    };
    const Case cases[] = {
            {"", "a", ""},
            {"abaca", "a", "bc"},
            {"a\xffz\0"s, "\xff", "az\0"s},
            {"a\0\xffz\0"s, "\0"s, "a\xffz"},
            {"<a>b<<c>>", "<>", "abc"},
            {"xyzzy", "zyz", "x"},
            {"a\0\xff\n"s, "\n\0"s, "a\xff"},
            {"a b", "", "a b"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.input);
        std::string copied = "previous";
        std::string inPlace = c.input;
        WpaStringUtils::Strip(c.input, c.set, copied);
        WpaStringUtils::Strip(inPlace, c.set);
        EXPECT_EQ(c.output, copied);
        EXPECT_EQ(c.output, inPlace);
        if (c.set.size() == 1) {  // and the forms that take a character
            WpaStringUtils::Strip(c.input, c.set[0], copied = "previous");
            WpaStringUtils::Strip(inPlace = c.input, c.set[0]);
            EXPECT_EQ(c.output, copied);
            EXPECT_EQ(c.output, inPlace);
        }
    }
}

TEST(strutil, strip_reads_arguments_that_are_one_object_as_they_stand) {
    std::string text = "a-b-c-";
    WpaStringUtils::Strip(text, '-', text);
    EXPECT_EQ("abc", text);
    const std::string input = "abc";
    std::string out;
    WpaStringUtils::Strip(input, input, out);
    EXPECT_EQ("", out);
    // The set is read afresh at every pass, as the passes before left it.
    text = "abcabc";
    WpaStringUtils::Strip(text, text);
    EXPECT_EQ("bb", text);
    std::string set = "zzz";
    WpaStringUtils::Strip("abcabc"s, set, set);  // overwrites the set with the input first
    EXPECT_EQ("bb", set);
}

TEST(strutil, split_folds_blanks_and_keeps_empty_fields) {
    struct Case {
        std::string text;
        char delimiter;
        Fields fields;
    };
    const Case cases[] = {
            {"", ',', {""}},
            {" \t \t", ' ', {""}},
            {"a,b", ',', {"a", "b"}},
            {"a,", ',', {"a", ""}},
            {",a", ',', {"", "a"}},
            {"a,,b", ',', {"a", "", "b"}},
            // Leading blanks go; every other run keeps its first byte, so a trailing run stays.
            {" \t a b", ' ', {"a", "b"}},
            {"a   b", ' ', {"a", "b"}},
            {"a  ", ' ', {"a", ""}},
            {"a\t b", ' ', {"a\tb"}},
            {"a \t \tb", '\t', {"a b"}},
            {"a ,  b", ',', {"a ", " b"}},
            {"  a ,b ", ',', {"a ", "b "}},
            // Line ends, NUL and high bytes are ordinary bytes.
            {"a b\nc d", ' ', {"a", "b\nc", "d"}},
            {"a\n\n\nb", ' ', {"a\n\n\nb"}},
            {"\ra \r b\r", ' ', {"\ra", "\r", "b\r"}},
            {"a\0b c"s, ' ', {"a\0b"s, "c"}},
            {"x\xffy\xff", '\xff', {"x", "y", ""}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Fields fields;
        WpaStringUtils::SplitString(c.text, c.delimiter, fields);
        EXPECT_EQ(c.fields, fields);
    }
}

TEST(strutil, split_appends_and_may_read_an_element_of_its_output) {
    Fields fields = {"x y z"};
    fields.shrink_to_fit();  // the next append reallocates, moving the text it reads
    WpaStringUtils::SplitString(fields[0], ' ', fields);
    EXPECT_THAT(fields, ElementsAre("x y z", "x", "y", "z"));
}

TEST(strutil, key_values_take_the_field_after_the_first_field_a_key_is_found_in) {
    struct Case {
        std::string text;
        KeyValues before;
        KeyValues after;
    };
    const Case cases[] = {
            {"id 3 name <home> chan 6",
             {{"id", ""}, {"name", ""}, {"chan", ""}},
             {{"id", "3"}, {"name", "home"}, {"chan", "6"}}},
            // Not found, or found in the last field: the value stays.
            {"id 3", {{"freq", "default"}}, {{"freq", "default"}}},
            {"id 3", {}, {}},
            {"id 3", {{"3", "default"}}, {{"3", "default"}}},
            {"", {{"", "default"}}, {{"", "default"}}},
            // Found inside a field unless anchored, case-sensitively.
            {"bssid 00:11 id 3", {{"id", ""}}, {{"id", "00:11"}}},
            {"bssid 00:11 id 3", {{"^id$", ""}}, {{"^id$", "3"}}},
            {"ssid=abc next", {{"ssid", ""}}, {{"ssid", "next"}}},
            {"id 3", {{"ID", "x"}}, {{"ID", "x"}}},
            // Every key starts again at the first field.
            {"a 1 a 2", {{"a", ""}}, {{"a", "1"}}},
            {"a b c", {{"a", ""}, {"b", ""}}, {{"a", "b"}, {"b", "c"}}},
            {"ex f", {{"^e", ""}, {"x$", ""}}, {{"^e", "f"}, {"x$", "f"}}},
            {"first second", {{"", ""}}, {{"", "second"}}},
            // Angle brackets go wherever they stand.
            {"k a<b>c", {{"k", ""}}, {{"k", "abc"}}},
            {"k <><>", {{"k", "x"}}, {{"k", ""}}},
            // Fields are SplitString's at spaces.
            {"a ", {{"a", "x"}}, {{"a", ""}}},
            {"a 1\r\n", {{"a", ""}}, {{"a", "1\r\n"}}},
            {"a\t 1", {{"a", "x"}}, {{"a", "x"}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        KeyValues keyValues = c.before;
        WpaStringUtils::GetKeyValues(c.text, keyValues);
        EXPECT_EQ(c.after, keyValues);
    }
}

TEST(strutil, key_values_abort_on_a_malformed_key) {
    KeyValues keyValues = {{"(", ""}};
    EXPECT_EXIT(WpaStringUtils::GetKeyValues("a b", keyValues), ::testing::KilledBySignal(SIGABRT),
                "");
}

}  // namespace
