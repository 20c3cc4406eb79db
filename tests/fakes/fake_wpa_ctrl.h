#pragma once

// Link-time stand-in for libwpa_client. Every call is recorded with the connection it was given;
// results are scripted. Each connection is a real AF_UNIX datagram socketpair, so select(),
// truncation and queueing of events behave as with the supplicant.

#include <stddef.h>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace fake {

enum class Op { kOpen, kClose, kAttach, kDetach, kRequest, kGetFd, kRecv, kPending };

struct Call {
    Op op;
    int conn;           // 1-based, in the order the connections were opened; 0 for null
    std::string text;   // kOpen: the path as received; kRequest: the command bytes
    size_t length = 0;  // kRequest: reply capacity offered; kRecv: receive capacity offered
};

struct WpaCtrlScript {
    std::deque<bool> openFails;  // consumed one per wpa_ctrl_open; true returns null
    int attachResult = 0;
    int requestResult = 0;
    std::string reply = "OK\n";      // copied into the reply buffer, up to its capacity
    std::optional<size_t> replyLen;  // reported reply length; default: the bytes copied
    std::deque<int> recvResults;     // consumed one per recv; a negative one fails it
    std::deque<int> pendingResults;  // consumed one per pending; else the real queue state
    std::optional<int> fd;           // what wpa_ctrl_get_fd reports instead of the socket
    std::function<void()> onOpen;    // runs inside every wpa_ctrl_open
};

WpaCtrlScript& Script();
const std::vector<Call>& Calls();
std::vector<Op> Ops();
// Forgets the calls recorded so far; connections and scripting stay.
void ClearCalls();
// Closes every connection still open and forgets all calls and scripting.
void Reset();
// Queues one datagram on the connection opened last (an open client's event connection).
void SendEvent(const std::string& bytes);
// Connections opened and not yet closed.
int OpenConnections();

}  // namespace fake
