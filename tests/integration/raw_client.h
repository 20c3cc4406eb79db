#pragma once

// Reference readings taken with libwpa_client directly and a large buffer, beside the library.
//
// These connections bind their client sockets in |clientDir|, never in /tmp: libwpa_client names
// them /tmp/wpa_ctrl_<pid>-<counter>, and the copy linked here counts apart from the one inside
// the library under test. Both would make the same names, and libwpa_client takes a name that is
// in use by unlinking the other socket, which silently steals that connection's replies.

#include <chrono>
#include <regex>
#include <string>
#include <vector>

struct wpa_ctrl;

// The whole reply to |command|, or "" if the request failed.
std::string RawRequest(const std::string& socketPath, const std::string& clientDir,
                       const std::string& command);

// An attached event connection of its own that records every event it receives.
class RawMonitor {
  public:
    RawMonitor(const std::string& socketPath, const std::string& clientDir);
    ~RawMonitor();
    RawMonitor(const RawMonitor&) = delete;
    RawMonitor& operator=(const RawMonitor&) = delete;

    bool ok() const { return ctrl_ != nullptr; }
    // Reads events until one matches |pattern| or |timeout| passes; true if one matched.
    bool WaitFor(const std::regex& pattern, std::chrono::milliseconds timeout);
    const std::vector<std::string>& events() const { return events_; }

  private:
    struct wpa_ctrl* ctrl_ = nullptr;
    std::vector<std::string> events_;
};
