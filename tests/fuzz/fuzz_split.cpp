// SplitString: one field more than delimiters in the normalised text, no field holds the
// delimiter, the fields joined back give the normalised text, and earlier elements stay.

#include <algorithm>
#include <vector>

#include "WpaStringUtils.h"
#include "fuzz_input.h"

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// What the text must normalise to: leading blanks dropped, other blank runs cut to their first.
std::string Normalised(const std::string& text) {
    std::string out;
    size_t i = 0;
    while (i < text.size() && IsBlank(text[i])) ++i;
    for (; i < text.size(); ++i) {
        if (!(IsBlank(text[i]) && i > 0 && IsBlank(text[i - 1]))) out.push_back(text[i]);
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const char delimiter = static_cast<char>(input.Byte());
    const std::string text = input.Rest();

    std::vector<std::string> fields = {"kept"};
    WpaStringUtils::SplitString(text, delimiter, fields);
    FUZZ_CHECK(fields.size() >= 2 && fields[0] == "kept");

    const std::string normalised = Normalised(text);
    const auto delimiters =
            static_cast<size_t>(std::count(normalised.begin(), normalised.end(), delimiter));
    FUZZ_CHECK(fields.size() - 1 == delimiters + 1);
    std::string joined;
    for (size_t i = 1; i < fields.size(); ++i) {
        FUZZ_CHECK(fields[i].find(delimiter) == std::string::npos);
        if (i > 1) joined.push_back(delimiter);
        joined += fields[i];
    }
    FUZZ_CHECK(joined == normalised);

    // The text may be an element of the output itself.
    std::vector<std::string> self = {text};
    WpaStringUtils::SplitString(self[0], delimiter, self);
    FUZZ_CHECK(std::equal(self.begin() + 1, self.end(), fields.begin() + 1, fields.end()));
    return 0;
}
