// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Moving the association within a network.

#include "TesmirRecipes.h"
#include "waits.h"

namespace tesmir::recipes {

bool Roam(WpacliWrapper& client, const std::string& bssid) {
    Completion completion;
    completion.bssid = bssid;
    completion.happened = [&client, &bssid] {
        std::string now;
        return CurrentBssid(client, &now) && now == bssid;
    };
    return Command(client, "ROAM " + bssid) && AwaitCompleted(client, completion, nullptr);
}

}  // namespace tesmir::recipes
