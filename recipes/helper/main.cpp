// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// tesmir-list-helper [--serve] SOCKET: lists every BSS that the supplicant at SOCKET holds, on a
// client of its own, in the lines of bss_lines.h: once, or for each request of its host.
// Started by tesmir::recipes::ListNetworksIsolated(), so that the empty reply which ends a
// process ends this one. Exit statuses in kUsage.

#include <dirent.h>
#include <errno.h>
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
        "usage: tesmir-list-helper [--serve] SOCKET\n"
        "Lists every BSS the supplicant at SOCKET holds, a line each, then \"done N\"; run by\n"
        "ListNetworksIsolated() of the recipes, so that an entry gone mid-listing ends this\n"
        "process, not the host.\n"
        "  --serve  keep the client open and list for each request read on standard input, a\n"
        "           stream socket, answering there, until the host's end closes\n"
        "exit status: 0 listed (served), 1 SOCKET did not open, 2 a call failed, 64 bad usage\n";

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

std::string Lines(const std::vector<recipes::Bss>& found) {
    std::string out;
    for (const recipes::Bss& bss : found) out += recipes::BssLine(bss);
    return out + "done " + std::to_string(found.size()) + "\n";
}

// One request from |fd|, without its line feed; false at the end of the channel, which is how the
// helper learns that its host closed it, exited or was killed. The host sends one request and
// waits for its answer, so a read never holds the start of the next one.
bool ReadRequest(int fd, std::string* line) {
    line->clear();
    char buffer[64];
    while (line->empty() || line->back() != '\n') {
        const ssize_t n = read(fd, buffer, sizeof(buffer));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0 || line->size() > sizeof(buffer)) return false;
        line->append(buffer, static_cast<size_t>(n));
    }
    line->pop_back();
    return true;
}

// Answers the host's requests on standard input until it closes its end. A call that fails
// ends the helper (status 2): the host starts another, with a client of its own.
int Serve(WpacliWrapper& client) {
    const std::string request(recipes::kListRequest, strlen(recipes::kListRequest) - 1);
    std::string line;
    std::vector<recipes::Bss> found;
    while (ReadRequest(STDIN_FILENO, &line)) {
        if (line != request) {
            if (!recipes::SendAll(STDIN_FILENO, recipes::kUnsupported)) break;
            continue;
        }
        if (!recipes::ListNetworks(client, &found)) return 2;
        if (!recipes::SendAll(STDIN_FILENO, Lines(found))) break;
    }
    return 0;
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
    const bool serve = argc == 3 && strcmp(argv[1], recipes::kServe) == 0;
    if (!serve && (argc != 2 || argv[1][0] == '-')) {
        fputs(kUsage, stderr);
        return 64;
    }
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(argv[argc - 1]) != 0) return 1;
    if (serve) return Serve(*client);
    std::vector<recipes::Bss> found;
    if (!recipes::ListNetworks(*client, &found)) return 2;
    const std::string out = Lines(found);
    return fwrite(out.data(), 1, out.size(), stdout) == out.size() && fflush(stdout) == 0 ? 0 : 2;
}
