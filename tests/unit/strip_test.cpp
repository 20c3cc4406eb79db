#include <gtest/gtest.h>

#include "WpaStringUtils.h"

namespace {

// Runs both forms with a character and checks they agree.
std::string StripChar(const std::string& input, char ch) {
    std::string copied = "previous";
    WpaStringUtils::Strip(input, ch, copied);
    std::string inPlace = input;
    WpaStringUtils::Strip(inPlace, ch);
    EXPECT_EQ(copied, inPlace);
    return copied;
}

// Runs both forms with a set and checks they agree.
std::string StripSet(const std::string& input, const std::string& set) {
    std::string copied = "previous";
    WpaStringUtils::Strip(input, set, copied);
    std::string inPlace = input;
    WpaStringUtils::Strip(inPlace, set);
    EXPECT_EQ(copied, inPlace);
    return copied;
}

TEST(strutil, strip_removes_a_character_everywhere) {
    EXPECT_EQ("", StripChar("", 'a'));
    EXPECT_EQ("", StripChar("aaa", 'a'));
    EXPECT_EQ("bcd", StripChar("bcd", 'a'));
    EXPECT_EQ("bc", StripChar("abaca", 'a'));
    EXPECT_EQ("AB", StripChar("A B", ' '));
}

TEST(strutil, strip_treats_nul_and_high_bytes_as_data) {
    EXPECT_EQ(std::string("ab\0", 3), StripChar(std::string("a\xff"
                                                            "b\0",
                                                            4),
                                                '\xff'));
    EXPECT_EQ(
            "a\xff"
            "b",
            StripChar(std::string("a\0\xff"
                                  "b\0",
                                  5),
                      '\0'));
}

TEST(strutil, strip_copy_out_may_write_its_own_input) {
    std::string text = "a-b-c-";
    WpaStringUtils::Strip(text, '-', text);
    EXPECT_EQ("abc", text);
    text = "<a>";
    WpaStringUtils::Strip(text, "<>", text);
    EXPECT_EQ("a", text);
}

TEST(strutil, strip_set_removes_each_byte_of_the_set) {
    EXPECT_EQ("abc", StripSet("<a>b<<c>>", "<>"));
    EXPECT_EQ("x", StripSet("xyzzy", "zyz"));
    EXPECT_EQ("", StripSet("", "abc"));
    EXPECT_EQ(std::string("a\xff", 2),
              StripSet(std::string("a\0\xff\n", 4), std::string("\n\0", 2)));
}

TEST(strutil, strip_set_with_empty_set_copies) {
    EXPECT_EQ("a b", StripSet("a b", ""));
}

TEST(strutil, strip_set_that_is_the_output_shrinks_as_it_goes) {
    std::string text = "abcabc";
    WpaStringUtils::Strip(text, text);
    EXPECT_EQ("bb", text);

    // The copy-out form first overwrites the set with the input.
    std::string set = "zzz";
    WpaStringUtils::Strip(std::string("abcabc"), set, set);
    EXPECT_EQ("bb", set);
}

TEST(strutil, strip_set_that_is_the_input_leaves_it_alone) {
    const std::string text = "abc";
    std::string out;
    WpaStringUtils::Strip(text, text, out);
    EXPECT_EQ("", out);
    EXPECT_EQ("abc", text);
}

}  // namespace
