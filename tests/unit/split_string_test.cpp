#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "WpaStringUtils.h"

using ::testing::ElementsAre;

namespace {

std::vector<std::string> Split(const std::string& text, char delimiter) {
    std::vector<std::string> fields;
    WpaStringUtils::SplitString(text, delimiter, fields);
    return fields;
}

TEST(strutil, split_of_nothing_but_blanks_gives_one_empty_field) {
    EXPECT_THAT(Split("", ','), ElementsAre(""));
    EXPECT_THAT(Split(" \t \t", ','), ElementsAre(""));
    EXPECT_THAT(Split(" \t \t", ' '), ElementsAre(""));
}

TEST(strutil, split_keeps_empty_fields) {
    EXPECT_THAT(Split("a,b", ','), ElementsAre("a", "b"));
    EXPECT_THAT(Split("a,", ','), ElementsAre("a", ""));
    EXPECT_THAT(Split(",a", ','), ElementsAre("", "a"));
    EXPECT_THAT(Split("a,,b", ','), ElementsAre("a", "", "b"));
    EXPECT_THAT(Split(",", ','), ElementsAre("", ""));
}

TEST(strutil, split_drops_leading_blanks_and_folds_the_rest) {
    EXPECT_THAT(Split(" \t a b", ' '), ElementsAre("a", "b"));
    EXPECT_THAT(Split("a   b", ' '), ElementsAre("a", "b"));
    // A trailing run survives as one blank, so it ends in an empty field.
    EXPECT_THAT(Split("a  ", ' '), ElementsAre("a", ""));
}

TEST(strutil, split_keeps_the_first_byte_of_a_blank_run) {
    EXPECT_THAT(Split("a\t b", ' '), ElementsAre("a\tb"));
    EXPECT_THAT(Split("a \tb", '\t'), ElementsAre("a b"));
    EXPECT_THAT(Split("a \t \tb", '\t'), ElementsAre("a b"));
}

TEST(strutil, split_at_a_non_blank_keeps_the_blanks_beside_it) {
    EXPECT_THAT(Split("a ,  b", ','), ElementsAre("a ", " b"));
    EXPECT_THAT(Split("  a ,b ", ','), ElementsAre("a ", "b "));
}

TEST(strutil, split_treats_line_ends_and_nul_as_ordinary_bytes) {
    EXPECT_THAT(Split("a b\nc d", ' '), ElementsAre("a", "b\nc", "d"));
    EXPECT_THAT(Split("a\n\n\nb", ' '), ElementsAre("a\n\n\nb"));
    EXPECT_THAT(Split(std::string("a\0b c", 5), ' '), ElementsAre(std::string("a\0b", 3), "c"));
    EXPECT_THAT(Split("x\xff"
                      "y\xff",
                      '\xff'),
                ElementsAre("x", "y", ""));
}

TEST(strutil, split_appends_to_what_the_output_holds) {
    std::vector<std::string> fields = {"kept"};
    WpaStringUtils::SplitString("a b", ' ', fields);
    EXPECT_THAT(fields, ElementsAre("kept", "a", "b"));
}

TEST(strutil, split_may_read_an_element_of_its_own_output) {
    std::vector<std::string> fields = {"x y z"};
    fields.shrink_to_fit();  // the next append reallocates, moving the text it reads
    WpaStringUtils::SplitString(fields[0], ' ', fields);
    EXPECT_THAT(fields, ElementsAre("x y z", "x", "y", "z"));
}

}  // namespace
