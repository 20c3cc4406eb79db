// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "WpaStringUtils.h"
#include "WpacliWrapper.h"

int main() {
    std::vector<std::string> fields;
    WpaStringUtils::SplitString("a b", ' ', fields);
    delete GetWpacliWrapperHandle();
    return fields.size() == 2 ? 0 : 1;
}
