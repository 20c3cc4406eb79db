// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// tesmir-recipes: runs one recipe of recipes.h against a supplicant's control socket and prints
// what it found. Exit status 0 when the recipe did what was asked, 1 when not, 64 on bad usage.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include "WpacliWrapper.h"
#include "recipes.h"

namespace {

constexpr const char* kUsage =
        "usage: tesmir-recipes SOCKET RECIPE [ARGS...]\n"
        "  scan [FREQS]                        scan (FREQS in MHz: 2412,2437) and wait for "
        "results\n"
        "  list                                every BSS held: bssid, freq, level, flags, ssid\n"
        "                                      (its bytes; \"[cut: N bytes]\" after a part)\n"
        "  connect SSID open|psk|sae [PASSPHRASE] [FREQS]\n"
        "                                      connect (FREQS in MHz: \"2412 2437\")\n"
        "  status                              the current BSSID, and the signal\n"
        "  disconnect | reconnect | forget     forget removes every network\n"
        "  roam BSSID                          move to another BSS of the same network\n"
        "  wait-link-loss SECONDS              wait for the link to drop; print the reason\n";

int Usage() {
    fputs(kUsage, stderr);
    return 64;
}

bool PrintStatus(WpacliWrapper& client) {
    std::string bssid;
    recipes::Signal signal;
    if (!recipes::CurrentBssid(client, &bssid) || !recipes::ReadSignal(client, &signal)) {
        return false;
    }
    printf("bssid=%s freq=%d rssi=%d linkspeed=%d\n", bssid.c_str(), signal.freq, signal.rssi,
           signal.linkSpeed);
    return true;
}

bool Run(WpacliWrapper& client, const std::vector<std::string>& args) {
    const std::string& recipe = args[0];
    const auto arg = [&args](size_t i) { return i < args.size() ? args[i] : std::string(); };
    if (recipe == "scan") return recipes::Scan(client, arg(1));
    if (recipe == "list") {
        std::vector<recipes::Bss> found;
        if (!recipes::ListNetworks(client, &found)) return false;
        for (const recipes::Bss& bss : found) {
            printf("%s %d %d %s %s%s\n", bss.bssid.c_str(), bss.freq, bss.level, bss.flags.c_str(),
                   bss.ssid.c_str(),
                   bss.ssidWhole
                           ? ""
                           : (" [cut: " + std::to_string(bss.ssidLength) + " bytes]").c_str());
        }
        return true;
    }
    if (recipe == "connect") {
        const std::string kind = arg(2);
        const recipes::Security security = kind == "sae"   ? recipes::Security::kWpa3Sae
                                           : kind == "psk" ? recipes::Security::kWpa2Psk
                                                           : recipes::Security::kOpen;
        const bool open = security == recipes::Security::kOpen;
        std::string bssid;
        return recipes::Connect(client, arg(1), security, open ? "" : arg(3), arg(open ? 3 : 4),
                                &bssid) &&
               PrintStatus(client);
    }
    if (recipe == "status") return PrintStatus(client);
    if (recipe == "disconnect") return recipes::Disconnect(client);
    if (recipe == "reconnect") return recipes::Reconnect(client, nullptr) && PrintStatus(client);
    if (recipe == "forget") return recipes::Forget(client);
    if (recipe == "roam") return recipes::Roam(client, arg(1)) && PrintStatus(client);
    if (recipe == "wait-link-loss") {
        int reason = 0;
        if (!recipes::WaitForLinkLoss(client, atoi(arg(1).c_str()), &reason)) return false;
        printf("reason=%d\n", reason);
        return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    static const char* const kRecipes[] = {"scan",   "list",       "connect",
                                           "status", "disconnect", "reconnect",
                                           "forget", "roam",       "wait-link-loss"};
    if (argc < 3) return Usage();
    bool known = false;
    for (const char* recipe : kRecipes) known = known || strcmp(argv[2], recipe) == 0;
    if (!known) return Usage();
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(argv[1]) != 0) {
        fprintf(stderr, "tesmir-recipes: cannot open %s\n", argv[1]);
        return 1;
    }
    if (!Run(*client, std::vector<std::string>(argv + 2, argv + argc))) {
        fprintf(stderr, "tesmir-recipes: %s did not succeed\n", argv[2]);
        return 1;
    }
    return 0;
}
