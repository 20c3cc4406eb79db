#include "raw_client.h"

#include <stddef.h>
#include <sys/select.h>

#include <wpa_ctrl.h>

namespace {

constexpr size_t kLargeBuffer = 4096;

}  // namespace

std::string RawRequest(const std::string& socketPath, const std::string& clientDir,
                       const std::string& command) {
    struct wpa_ctrl* ctrl = wpa_ctrl_open2(socketPath.c_str(), clientDir.c_str());
    if (ctrl == nullptr) return "";
    char reply[kLargeBuffer];
    size_t replyLen = sizeof(reply);
    const int result =
            wpa_ctrl_request(ctrl, command.data(), command.size(), reply, &replyLen, nullptr);
    wpa_ctrl_close(ctrl);
    return result < 0 ? "" : std::string(reply, replyLen);
}

RawMonitor::RawMonitor(const std::string& socketPath, const std::string& clientDir) {
    ctrl_ = wpa_ctrl_open2(socketPath.c_str(), clientDir.c_str());
    if (ctrl_ != nullptr && wpa_ctrl_attach(ctrl_) != 0) {
        wpa_ctrl_close(ctrl_);
        ctrl_ = nullptr;
    }
}

RawMonitor::~RawMonitor() {
    if (ctrl_ == nullptr) return;
    wpa_ctrl_detach(ctrl_);
    wpa_ctrl_close(ctrl_);
}

bool RawMonitor::WaitFor(const std::regex& pattern, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    const int fd = wpa_ctrl_get_fd(ctrl_);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
                deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(fd, &readable);
        struct timeval wait = {static_cast<time_t>(left.count() / 1000000),
                               static_cast<suseconds_t>(left.count() % 1000000)};
        if (select(fd + 1, &readable, nullptr, nullptr, &wait) <= 0) return false;
        char event[kLargeBuffer];
        size_t eventLen = sizeof(event);
        if (wpa_ctrl_recv(ctrl_, event, &eventLen) != 0) return false;
        events_.emplace_back(event, eventLen);
        if (std::regex_search(events_.back(), pattern)) return true;
    }
}
