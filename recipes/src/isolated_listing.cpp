// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>

#include "TesmirRecipes.h"
#include "bss_lines.h"
#include "child.h"

namespace tesmir::recipes {
namespace {

enum class Outcome { kListed, kServing, kEnded, kHung, kFailed, kNotStarted, kOtherVersion };

// How a child that could not run ends where posix_spawn does not report it, and how the dynamic
// linker ends one it cannot load; tesmir-list-helper never exits with it.
constexpr int kCannotRun = 127;
// How a helper of an earlier version answers --serve.
constexpr int kBadUsage = 64;
// How long a helper whose channel was closed gets to end by itself and remove its client sockets.
constexpr int kEndingMilliseconds = 1000;

using Clock = std::chrono::steady_clock;

// The helper of one socket, kept between listings.
struct Warm {
    std::mutex lock;  // one listing at a time: the helper has one client, used by one thread
    Child child;
    int channel = -1;       // the host's end, close-on-exec; -1 while no helper serves
    std::string clientDir;  // where the running helper's client sockets are
    bool oneShot = false;   // the helper cannot serve (another version): one run a listing
    bool retired = false;   // taken out of the registry by EndListingHelpers()
};

// The helpers by socket and helper path. Never destroyed: a host that exits with helpers
// running closes their channels, and they end.
std::mutex& RegistryLock() {
    static auto* lock = new std::mutex;
    return *lock;
}
std::map<std::string, std::shared_ptr<Warm>>& Registry() {
    static auto* helpers = new std::map<std::string, std::shared_ptr<Warm>>;
    return *helpers;
}

std::shared_ptr<Warm> WarmFor(const Isolation& isolation, const std::string& socket) {
    std::lock_guard<std::mutex> hold(RegistryLock());
    std::shared_ptr<Warm>& warm = Registry()[isolation.helper + '\n' + socket];
    if (warm == nullptr) warm = std::make_shared<Warm>();
    return warm;
}

// Reads from |fd| into |out| until |whole| says the answer is complete (true), the channel ends
// or fails (false, |*late| false), or |deadline| comes (false, |*late| true).
bool Read(int fd, Clock::time_point deadline, bool (*whole)(const std::string&), std::string* out,
          bool* late) {
    char buffer[4096];
    *late = false;
    for (;;) {
        if (whole != nullptr && whole(*out)) return true;
        const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            *late = true;
            return false;
        }
        pollfd readable = {fd, POLLIN, 0};
        const int ready = poll(&readable, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno != EINTR) return false;
        if (ready <= 0) continue;
        const ssize_t n = read(fd, buffer, sizeof(buffer));
        if (n == 0) return whole == nullptr;
        if (n < 0 && errno != EINTR && errno != EAGAIN) return false;
        if (n > 0) out->append(buffer, static_cast<size_t>(n));
    }
}

// What the ending of a helper that did not list means. One that ends with kCannotRun having
// said nothing never ran.
Outcome Ended(const Isolation& isolation, const Ending& ending, bool saidNothing, int* startError) {
    if (ending.signaled) return Outcome::kEnded;
    if (ending.known && ending.code == kCannotRun && saidNothing) {
        *startError = access(isolation.helper.c_str(), X_OK) == 0 ? ENOEXEC : errno;
        return Outcome::kNotStarted;
    }
    return Outcome::kFailed;
}

// One run as helpers of earlier versions serve: the helper lists once on its standard output
// and ends.
Outcome RunOnce(const Isolation& isolation, const std::string& socket, std::vector<Bss>* found,
                int* startError) {
    int pipe_fds[2];
    if (pipe2(pipe_fds, O_CLOEXEC) != 0) return Outcome::kFailed;
    Child child;
    *startError = SpawnChild({isolation.helper, socket}, -1, pipe_fds[1], &child);
    close(pipe_fds[1]);
    if (*startError != 0) {
        close(pipe_fds[0]);
        return Outcome::kNotStarted;
    }
    std::string output;
    bool late = false;
    Read(pipe_fds[0], Clock::now() + std::chrono::milliseconds(isolation.milliseconds), nullptr,
         &output, &late);
    close(pipe_fds[0]);
    // Ended by now, unless it hung.
    const Ending ending = EndChild(&child, late ? 0 : -1);
    RemoveClientSockets(isolation.clientDir, child.pid);
    if (late) return Outcome::kHung;
    if (!ending.known || ending.signaled || ending.code != 0) {
        return Ended(isolation, ending, output.empty(), startError);
    }
    return ParseBssLines(output, found) ? Outcome::kListed : Outcome::kFailed;
}

// Starts a serving helper for |warm|. The host's end of the channel is close-on-exec, so that no
// other child of the host keeps the helper alive; the helper's end is its standard input.
Outcome Start(const Isolation& isolation, const std::string& socket, Warm* warm, int* startError) {
    int channel[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, channel) != 0) return Outcome::kFailed;
    *startError = SpawnChild({isolation.helper, kServe, socket}, channel[1], -1, &warm->child);
    close(channel[1]);
    if (*startError != 0) {
        close(channel[0]);
        return Outcome::kNotStarted;
    }
    warm->channel = channel[0];
    warm->clientDir = isolation.clientDir;
    return Outcome::kServing;
}

// Ends |warm|'s helper: its channel closed, it ends by itself, or is ended; then reaped and its
// client sockets removed.
Ending Stop(Warm* warm, int milliseconds) {
    close(warm->channel);
    warm->channel = -1;
    const Ending ending = EndChild(&warm->child, milliseconds);
    RemoveClientSockets(warm->clientDir, warm->child.pid);
    return ending;
}

// A listing from |warm|'s running helper. Any outcome but kListed leaves no helper running.
Outcome Ask(const Isolation& isolation, Warm* warm, std::vector<Bss>* found, int* startError) {
    std::string answer;
    bool late = false;
    const bool whole =
            SendAll(warm->channel, kListRequest) &&
            Read(warm->channel, Clock::now() + std::chrono::milliseconds(isolation.milliseconds),
                 AnswerIsWhole, &answer, &late);
    if (whole && answer != kUnsupported && ParseBssLines(answer, found)) return Outcome::kListed;
    if (late) {
        Stop(warm, 0);
        return Outcome::kHung;
    }
    // The channel ended, so did the helper or it is about to; or it answered in another version,
    // or in words that do not read.
    const Ending ending = Stop(warm, kEndingMilliseconds);
    if (whole) return answer == kUnsupported ? Outcome::kOtherVersion : Outcome::kFailed;
    if (ending.known && !ending.signaled && ending.code == kBadUsage && answer.empty()) {
        return Outcome::kOtherVersion;
    }
    return Ended(isolation, ending, answer.empty(), startError);
}

}  // namespace

bool ListNetworksIsolated(const std::string& socket, std::vector<Bss>* found, ListingReport* report,
                          const Isolation& isolation) {
    *report = ListingReport();
    std::shared_ptr<Warm> warm = WarmFor(isolation, socket);
    std::unique_lock<std::mutex> hold(warm->lock);
    while (warm->retired) {  // EndListingHelpers() came between
        hold.unlock();
        warm = WarmFor(isolation, socket);
        hold = std::unique_lock<std::mutex>(warm->lock);
    }
    for (;;) {
        int startError = 0;
        Outcome outcome = Outcome::kServing;
        if (warm->channel < 0) {
            if (report->helpers == isolation.attempts) break;
            ++report->helpers;
            outcome = warm->oneShot ? RunOnce(isolation, socket, found, &startError)
                                    : Start(isolation, socket, warm.get(), &startError);
        }
        if (outcome == Outcome::kServing) outcome = Ask(isolation, warm.get(), found, &startError);
        switch (outcome) {
            case Outcome::kListed:
                return true;
            case Outcome::kServing:  // not from Ask()
                break;
            case Outcome::kOtherVersion:
                warm->oneShot = true;
                break;
            case Outcome::kEnded:
                ++report->ended;
                break;
            case Outcome::kHung:
                ++report->hung;
                break;
            case Outcome::kFailed:
                ++report->failed;
                break;
            case Outcome::kNotStarted:
                ++report->failed;
                report->startError = startError;
                report->startPath = isolation.helper;
                found->clear();
                return false;
        }
    }
    found->clear();
    return false;
}

void EndListingHelpers() {
    std::map<std::string, std::shared_ptr<Warm>> helpers;
    {
        std::lock_guard<std::mutex> hold(RegistryLock());
        helpers.swap(Registry());
    }
    for (auto& [key, warm] : helpers) {
        std::lock_guard<std::mutex> hold(warm->lock);
        warm->retired = true;
        if (warm->channel >= 0) Stop(warm.get(), kEndingMilliseconds);
    }
}

}  // namespace tesmir::recipes
