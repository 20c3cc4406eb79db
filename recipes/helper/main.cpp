// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// tesmir-list-helper SOCKET: lists every BSS that the supplicant at SOCKET holds, on a client of
// its own, and prints the lines of bss_lines.h. Started by recipes::ListNetworksIsolated(), so
// that the empty reply which ends a process ends this one. Exit statuses in kUsage.

#include <dirent.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "WpacliWrapper.h"
#include "bss_lines.h"

namespace recipes = tesmir::recipes;

namespace {

constexpr const char* kUsage =
        "usage: tesmir-list-helper SOCKET\n"
        "Lists every BSS the supplicant at SOCKET holds, a line each, then \"done N\"; run by\n"
        "ListNetworksIsolated() of the recipes, so that an entry gone mid-listing ends this\n"
        "process, not the host.\n"
        "exit status: 0 listed, 1 SOCKET did not open, 2 a call failed, 64 bad usage\n";

// The host's descriptors stay the host's: libwpa_client opens its sockets without close-on-exec.
void CloseInherited() {
#ifdef SYS_close_range  // Linux 5.9; older trees' kernel headers lack it
    if (syscall(SYS_close_range, 3U, ~0U, 0U) == 0) return;
#endif
    std::vector<int> open;
    if (DIR* fds = opendir("/proc/self/fd")) {
        while (const dirent* entry = readdir(fds)) {
            const int fd = atoi(entry->d_name);
            if (fd > 2 && fd != dirfd(fds)) open.push_back(fd);
        }
        closedir(fds);
    }
    for (int fd : open) close(fd);
}

}  // namespace

int main(int argc, char** argv) {
    // Ending here is expected: no crash dump for it (Android installs its handlers before main)
    // and no core file.
    for (int sig : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP}) {
        signal(sig, SIG_DFL);
    }
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    CloseInherited();
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        fputs(kUsage, stdout);
        return 0;
    }
    if (argc != 2 || argv[1][0] == '-') {
        fputs(kUsage, stderr);
        return 64;
    }
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(argv[1]) != 0) return 1;
    std::vector<recipes::Bss> found;
    if (!recipes::ListNetworks(*client, &found)) return 2;
    std::string out;
    for (const recipes::Bss& bss : found) out += recipes::BssLine(bss);
    out += "done " + std::to_string(found.size()) + "\n";
    return fwrite(out.data(), 1, out.size(), stdout) == out.size() && fflush(stdout) == 0 ? 0 : 2;
}
