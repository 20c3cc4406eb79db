// GetKeyValues on arbitrary text with keys from a fixed set of valid patterns: the map keeps its
// keys, and every value is its default or a field of the text without angle brackets.

#include <algorithm>
#include <map>
#include <vector>

#include "WpaStringUtils.h"
#include "fuzz_input.h"

namespace {

constexpr const char* kKeys[] = {"id",     "^id$", "ssid",    "bssid", "freq", "^to$",
                                 "",       "$",    "[0-9]+",  "a|b",   "(x)y", "CTRL-EVENT-\\w+",
                                 "\\d{2}", ".",    "^<3>.*$", "method"};
constexpr size_t kKeyCount = sizeof(kKeys) / sizeof(kKeys[0]);
// Not a field of any text: split fields hold no 0x01 followed by this unless the text did.
constexpr const char* kDefault =
        "\x01"
        "default";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const uint16_t chosen = input.Word();
    const std::string text = input.Rest();

    std::map<std::string, std::string> keyValues;
    for (size_t i = 0; i < kKeyCount; ++i) {
        if (chosen & (1u << i)) keyValues[kKeys[i]] = kDefault;
    }
    const std::map<std::string, std::string> before = keyValues;
    WpaStringUtils::GetKeyValues(text, keyValues);

    FUZZ_CHECK(keyValues.size() == before.size());
    std::vector<std::string> fields;
    WpaStringUtils::SplitString(text, ' ', fields);
    for (auto& field : fields) WpaStringUtils::Strip(field, "<>");
    for (const auto& [key, value] : keyValues) {
        FUZZ_CHECK(before.count(key) == 1);
        if (value == kDefault) continue;
        FUZZ_CHECK(value.find_first_of("<>") == std::string::npos);
        FUZZ_CHECK(std::find(fields.begin() + 1, fields.end(), value) != fields.end());
    }
    return 0;
}
