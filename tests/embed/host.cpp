#include <stdio.h>

#include <memory>

#include "WpaStringUtils.h"
#include "WpacliWrapper.h"

int main() {
    std::vector<std::string> fields;
    WpaStringUtils::SplitString("a b", ' ', fields);
    gTesmirLogLevel = 0;
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    const bool ok = fields.size() == 2 && client->Open("/nonexistent/wpa_supplicant") == -1;
    puts(ok ? "host: linked and ran" : "host: wrong results");
    return ok ? 0 : 1;
}
