#pragma once

// A stand-in supplicant that speaks the control protocol on a Unix datagram socket, so that edge
// cases (sizes, delays, queueing) can be driven through the real libwpa_client. It answers ATTACH
// and DETACH with "OK\n", replies to other commands from a script, and sends scripted events to
// the attached clients. Serves on its own thread from construction to destruction.

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>

class ScriptedSupplicant {
  public:
    struct Event {
        std::chrono::milliseconds delay;  // after the reply; ignored for events sent before it
        std::string bytes;
    };

    struct Script {
        std::string reply;
        std::vector<Event> before;  // sent to attached clients before the reply
        std::vector<Event> after;   // sent to attached clients, each at its delay after the reply
    };

    // Binds |socketPath| (removing a stale file there). Aborts if it cannot.
    explicit ScriptedSupplicant(std::string socketPath);
    ~ScriptedSupplicant();
    ScriptedSupplicant(const ScriptedSupplicant&) = delete;
    ScriptedSupplicant& operator=(const ScriptedSupplicant&) = delete;

    // What to do when |command| arrives. Unscripted commands get "UNKNOWN COMMAND\n".
    void On(const std::string& command, Script script);
    // The reply to ATTACH; "OK\n" unless set.
    void SetAttachReply(std::string reply);
    // Every datagram received so far, in order.
    std::vector<std::string> Commands() const;

  private:
    struct Pending {
        std::chrono::steady_clock::time_point due;
        std::string bytes;
    };

    void Serve();
    void Handle(const std::string& command, const sockaddr_un& from, socklen_t fromLen);
    void SendToMonitors(const std::string& bytes);

    const std::string socketPath_;
    int fd_ = -1;
    std::atomic<bool> stop_{false};
    mutable std::mutex mutex_;
    std::map<std::string, Script> scripts_;
    std::string attachReply_ = "OK\n";
    std::vector<std::string> commands_;
    std::vector<std::pair<sockaddr_un, socklen_t>> monitors_;
    std::vector<Pending> pending_;
    std::thread thread_;
};
