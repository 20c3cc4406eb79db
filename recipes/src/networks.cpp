// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The networks of the supplicant's configuration.

#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "WpaStringUtils.h"
#include "hex.h"
#include "waits.h"

namespace tesmir::recipes {
namespace {

// Cut at every tab, keeping empty fields: an empty SSID is two tabs in a row, which
// SplitString would read as one.
std::vector<std::string> Columns(const std::string& row) {
    std::vector<std::string> columns;
    size_t start = 0;
    for (size_t tab; (tab = row.find('\t', start)) != std::string::npos; start = tab + 1) {
        columns.push_back(row.substr(start, tab - start));
    }
    columns.push_back(row.substr(start));
    return columns;
}

// What the library leaves of a text in a reply: every space removed.
std::string WithoutSpaces(std::string text) {
    WpaStringUtils::Strip(text, ' ');
    return text;
}

// The SSID of a row that cut it: GET_NETWORK answers it quoted when every byte is printable
// (the cut takes the closing quote), else in hex (the cut takes the last digit). False when the
// network is gone.
bool ReadSsid(WpacliWrapper& client, ConfiguredNetwork* network) {
    std::string reply;
    if (!Command(client, "GET_NETWORK " + std::to_string(network->id) + " ssid", &reply)) {
        return false;
    }
    if (!reply.empty() && reply[0] == '"') {
        network->ssid = reply.substr(1);
        network->ssidWhole = true;
    } else {
        network->ssid = WithoutSpaces(Bytes(reply));
        network->ssidWhole = false;
    }
    return true;
}

}  // namespace

bool ListConfiguredNetworks(WpacliWrapper& client, std::vector<ConfiguredNetwork>* networks) {
    networks->clear();
    // "network id / ssid / bssid / flags\n" (34 bytes) comes first in every reply, then the rows
    // of the ids past LAST_ID: "<id>\t<SSID as printed>\t<bssid or any>\t<flags>\n". The 63
    // bytes hold one row, whole only when it is short.
    std::string reply;
    for (int last = -1;;) {
        if (!Command(client, "LIST_NETWORKS LAST_ID=" + std::to_string(last), &reply)) {
            return false;
        }
        const size_t start = reply.find('\n');
        if (start == std::string::npos) return true;  // the header alone
        const size_t end = reply.find('\n', start + 1);
        const std::vector<std::string> columns =
                Columns(reply.substr(start + 1, end == std::string::npos ? end : end - start - 1));
        ConfiguredNetwork network;
        network.id = Number(columns[0]);
        if (network.id <= last) return false;  // not a row of this supplicant's
        last = network.id;
        if (columns.size() > 2) {
            // The SSID is whole when a tab follows it.
            network.ssid = DecodeSsid(columns[1]);
            network.ssidWhole = true;
        } else if (!ReadSsid(client, &network)) {
            continue;  // removed since its row was read
        }
        if (columns.size() == 4) {
            network.flags = columns[3];
            network.flagsWhole = end != std::string::npos;
            if (!network.flagsWhole) {
                // Of a row the reply may have cut, the flags read whole: up to the last ']'.
                const size_t close = network.flags.rfind(']');
                network.flags.resize(close == std::string::npos ? 0 : close + 1);
            }
        }
        networks->push_back(network);
    }
}

bool SsidCanBe(const ConfiguredNetwork& network, const std::string& ssid) {
    const std::string read = WithoutSpaces(ssid);
    if (network.ssidWhole) return read == network.ssid;
    return read.compare(0, network.ssid.size(), network.ssid) == 0;
}

bool EnableNetwork(WpacliWrapper& client, int id) {
    return Command(client, "ENABLE_NETWORK " + std::to_string(id));
}

bool DisableNetwork(WpacliWrapper& client, int id) {
    return Command(client, "DISABLE_NETWORK " + std::to_string(id));
}

bool RemoveNetwork(WpacliWrapper& client, int id) {
    return Command(client, "REMOVE_NETWORK " + std::to_string(id));
}

bool SetPriority(WpacliWrapper& client, int id, int priority) {
    return Command(client,
                   "SET_NETWORK " + std::to_string(id) + " priority " + std::to_string(priority));
}

bool SaveConfig(WpacliWrapper& client) {
    return Command(client, "SAVE_CONFIG");
}

}  // namespace tesmir::recipes
