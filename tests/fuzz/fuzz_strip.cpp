// All four Strip forms, aliasing included: the output holds none of the removed bytes and keeps
// the order of the rest; copy-out and in-place agree.

#include <algorithm>

#include "WpaStringUtils.h"
#include "fuzz_input.h"

namespace {

bool IsSubsequence(const std::string& part, const std::string& whole) {
    size_t j = 0;
    for (size_t i = 0; i < whole.size() && j < part.size(); ++i) {
        if (whole[i] == part[j]) ++j;
    }
    return j == part.size();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const char ch = static_cast<char>(input.Byte());
    const std::string set = input.Bytes(8);
    const std::string text = input.Rest();

    std::string copied;
    WpaStringUtils::Strip(text, ch, copied);
    std::string inPlace = text;
    WpaStringUtils::Strip(inPlace, ch);
    FUZZ_CHECK(copied == inPlace);
    FUZZ_CHECK(copied.find(ch) == std::string::npos);
    FUZZ_CHECK(IsSubsequence(copied, text));
    FUZZ_CHECK(copied.size() + static_cast<size_t>(std::count(text.begin(), text.end(), ch)) ==
               text.size());

    std::string setCopied = "previous";
    WpaStringUtils::Strip(text, set, setCopied);
    std::string setInPlace = text;
    WpaStringUtils::Strip(setInPlace, set);
    FUZZ_CHECK(setCopied == setInPlace);
    FUZZ_CHECK(setCopied.find_first_of(set) == std::string::npos);
    FUZZ_CHECK(IsSubsequence(setCopied, text));

    // The set is the string itself: read afresh at every pass, so only order is promised.
    std::string self = text;
    WpaStringUtils::Strip(self, self);
    FUZZ_CHECK(IsSubsequence(self, text));
    std::string selfCopied = set;
    WpaStringUtils::Strip(text, selfCopied, selfCopied);
    FUZZ_CHECK(selfCopied == self);
    return 0;
}
