#include "scripted_supplicant.h"

#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace {

constexpr size_t kMaxDatagram = 8192;
constexpr int kIdlePollMs = 20;

[[noreturn]] void Die(const char* what) {
    fprintf(stderr, "scripted_supplicant: %s: %s\n", what, strerror(errno));
    abort();
}

bool SameAddress(const sockaddr_un& a, socklen_t aLen, const sockaddr_un& b, socklen_t bLen) {
    return aLen == bLen && memcmp(&a, &b, aLen) == 0;
}

}  // namespace

ScriptedSupplicant::ScriptedSupplicant(std::string socketPath)
    : socketPath_(std::move(socketPath)) {
    sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    if (socketPath_.size() >= sizeof(addr.sun_path)) Die("socket path too long");
    memcpy(addr.sun_path, socketPath_.c_str(), socketPath_.size() + 1);
    unlink(socketPath_.c_str());
    fd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd_ < 0) Die("socket");
    if (bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0) Die("bind");
    thread_ = std::thread([this] { Serve(); });
}

ScriptedSupplicant::~ScriptedSupplicant() {
    stop_ = true;
    thread_.join();
    close(fd_);
    unlink(socketPath_.c_str());
}

void ScriptedSupplicant::On(const std::string& command, Script script) {
    std::lock_guard<std::mutex> lock(mutex_);
    scripts_[command] = std::move(script);
}

void ScriptedSupplicant::SetAttachReply(std::string reply) {
    std::lock_guard<std::mutex> lock(mutex_);
    attachReply_ = std::move(reply);
}

std::vector<std::string> ScriptedSupplicant::Commands() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return commands_;
}

void ScriptedSupplicant::Serve() {
    std::vector<char> buffer(kMaxDatagram);
    while (!stop_) {
        int timeoutMs = kIdlePollMs;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            const auto now = std::chrono::steady_clock::now();
            for (auto it = pending_.begin(); it != pending_.end();) {
                if (it->due <= now) {
                    SendToMonitors(it->bytes);
                    it = pending_.erase(it);
                } else {
                    const auto wait =
                            std::chrono::duration_cast<std::chrono::milliseconds>(it->due - now);
                    timeoutMs = std::min<int>(timeoutMs, static_cast<int>(wait.count()) + 1);
                    ++it;
                }
            }
        }
        pollfd pfd = {fd_, POLLIN, 0};
        if (poll(&pfd, 1, timeoutMs) <= 0) continue;
        sockaddr_un from = {};
        socklen_t fromLen = sizeof(from);
        const ssize_t received = recvfrom(fd_, buffer.data(), buffer.size(), 0,
                                          reinterpret_cast<sockaddr*>(&from), &fromLen);
        if (received < 0) continue;
        Handle(std::string(buffer.data(), static_cast<size_t>(received)), from, fromLen);
    }
}

void ScriptedSupplicant::Handle(const std::string& command, const sockaddr_un& from,
                                socklen_t fromLen) {
    std::lock_guard<std::mutex> lock(mutex_);
    commands_.push_back(command);
    std::string reply;
    if (command == "ATTACH") {
        reply = attachReply_;
        if (reply == "OK\n") monitors_.emplace_back(from, fromLen);
    } else if (command == "DETACH") {
        monitors_.erase(std::remove_if(monitors_.begin(), monitors_.end(),
                                       [&](const auto& m) {
                                           return SameAddress(m.first, m.second, from, fromLen);
                                       }),
                        monitors_.end());
        reply = "OK\n";
    } else if (auto it = scripts_.find(command); it != scripts_.end()) {
        for (const Event& event : it->second.before) SendToMonitors(event.bytes);
        const auto now = std::chrono::steady_clock::now();
        for (const Event& event : it->second.after) {
            pending_.push_back({now + event.delay, event.bytes});
        }
        reply = it->second.reply;
    } else {
        reply = "UNKNOWN COMMAND\n";
    }
    sendto(fd_, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr*>(&from), fromLen);
}

void ScriptedSupplicant::SendToMonitors(const std::string& bytes) {
    for (const auto& [addr, len] : monitors_) {
        sendto(fd_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&addr), len);
    }
}
