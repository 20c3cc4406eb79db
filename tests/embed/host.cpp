// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <unistd.h>

#include "TesmirRecipes.h"
#include "WpaStringUtils.h"
#include "WpacliWrapper.h"

int main() {
    std::vector<std::string> fields;
    WpaStringUtils::SplitString("a b", ' ', fields);
    delete GetWpacliWrapperHandle();
    // The recipes, and the helper their isolated listing runs, by its exported target.
    tesmir::recipes::Isolation isolation;
    isolation.helper = TESMIR_LIST_HELPER;
    return fields.size() == 2 && tesmir::recipes::EventPattern("X") == "^(IFNAME=\\S+ )?<[0-9]>X" &&
                           access(isolation.helper.c_str(), X_OK) == 0
                   ? 0
                   : 1;
}
