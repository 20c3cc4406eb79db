// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// A vendor host like docs/DEVICE.md's: opens the supplicant's per-interface socket, drives it, and
// tells where libwpa_client bound its client sockets. One fact a line, for the test to compare.
//   vendor_host SOCKET CLIENT_DIR
#include <dirent.h>
#include <string.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "WpacliWrapper.h"

namespace {

// This process's client sockets in |dir|: libwpa_client names them wpa_ctrl_<pid>-<counter>.
int ClientSockets(const char* dir) {
    const std::string prefix = "wpa_ctrl_" + std::to_string(getpid()) + "-";
    int count = 0;
    if (DIR* d = opendir(dir)) {
        while (const dirent* entry = readdir(d)) {
            count += strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0;
        }
        closedir(d);
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 64;
    const char* dir = argv[2];
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    const int32_t opened = client->Open(argv[1]);
    printf("open: %d\n", opened);
    printf("client sockets: %d in %s, %d in /tmp\n", ClientSockets(dir), dir,
           ClientSockets("/tmp"));
    // A closed client must not be driven: libwpa_client would be handed a null connection.
    if (opened != 0) return 1;
    std::string reply;
    int32_t status = client->Execute("PING", "", reply, false);
    printf("PING: %d %s\n", status, reply.c_str());
    reply.clear();
    status = client->Execute("ADD_NETWORK", "^<[0-9]>CTRL-EVENT-NETWORK-ADDED ", reply, true);
    printf("ADD_NETWORK: %d %s\n", status, reply.c_str());
    client->Execute("REMOVE_NETWORK all", "", reply, false);
    client->Close();
    printf("after Close: %d\n", ClientSockets(dir));
    return 0;
}
