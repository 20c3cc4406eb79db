#include "fake_wpa_ctrl.h"

#include <stdlib.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include <wpa_ctrl.h>

struct wpa_ctrl {
    int id;
    int fd;    // the library's end
    int peer;  // where the test writes events
};

namespace fake {
namespace {

struct State {
    WpaCtrlScript script;
    std::vector<Call> calls;
    std::vector<wpa_ctrl*> open;
    int nextId = 1;
};

State& GetState() {
    static auto* state = new State();
    return *state;
}

void Record(Op op, const wpa_ctrl* ctrl, std::string text = {}, size_t length = 0) {
    GetState().calls.push_back({op, ctrl ? ctrl->id : 0, std::move(text), length});
}

template <typename T>
std::optional<T> Pop(std::deque<T>& queue) {
    if (queue.empty()) return std::nullopt;
    T value = queue.front();
    queue.pop_front();
    return value;
}

void Abort(const char* what) {
    fprintf(stderr, "fake_wpa_ctrl: %s: %s\n", what, strerror(errno));
    abort();
}

}  // namespace

WpaCtrlScript& Script() {
    return GetState().script;
}

const std::vector<Call>& Calls() {
    return GetState().calls;
}

std::vector<Op> Ops() {
    std::vector<Op> ops;
    for (const Call& call : Calls()) ops.push_back(call.op);
    return ops;
}

void ClearCalls() {
    GetState().calls.clear();
}

void Reset() {
    State& state = GetState();
    for (wpa_ctrl* ctrl : state.open) {
        close(ctrl->fd);
        close(ctrl->peer);
        delete ctrl;
    }
    state = State();
}

void SendEvent(const std::string& bytes) {
    State& state = GetState();
    if (state.open.empty()) Abort("no connection to send an event on");
    if (send(state.open.back()->peer, bytes.data(), bytes.size(), 0) < 0) Abort("send");
}

int OpenConnections() {
    return static_cast<int>(GetState().open.size());
}

}  // namespace fake

using fake::GetState;
using fake::Op;
using fake::Pop;
using fake::Record;

extern "C" {

struct wpa_ctrl* wpa_ctrl_open(const char* ctrl_path) {
    fake::State& state = GetState();
    Record(Op::kOpen, nullptr, ctrl_path);
    if (state.script.onOpen) state.script.onOpen();
    if (Pop(state.script.openFails).value_or(false)) return nullptr;

    int fds[2];
    if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, fds) != 0) fake::Abort("socketpair");
    auto* ctrl = new wpa_ctrl{state.nextId++, fds[0], fds[1]};
    state.open.push_back(ctrl);
    state.calls.back().conn = ctrl->id;
    return ctrl;
}

void wpa_ctrl_close(struct wpa_ctrl* ctrl) {
    fake::State& state = GetState();
    Record(Op::kClose, ctrl);
    auto it = std::find(state.open.begin(), state.open.end(), ctrl);
    if (it == state.open.end()) fake::Abort("closing a connection that is not open");
    state.open.erase(it);
    close(ctrl->fd);
    close(ctrl->peer);
    delete ctrl;
}

int wpa_ctrl_attach(struct wpa_ctrl* ctrl) {
    Record(Op::kAttach, ctrl);
    return GetState().script.attachResult;
}

int wpa_ctrl_detach(struct wpa_ctrl* ctrl) {
    Record(Op::kDetach, ctrl);
    return 0;
}

int wpa_ctrl_request(struct wpa_ctrl* ctrl, const char* cmd, size_t cmd_len, char* reply,
                     size_t* reply_len, void (* /*msg_cb*/)(char*, size_t)) {
    const fake::WpaCtrlScript& script = GetState().script;
    Record(Op::kRequest, ctrl, std::string(cmd, cmd_len), *reply_len);
    if (script.requestResult < 0) return script.requestResult;
    const size_t copied = std::min(script.reply.size(), *reply_len);
    // Replies are bytes, not C strings: no terminator is added, as with the real client.
    memcpy(reply, script.reply.data(), copied);  // NOLINT(bugprone-not-null-terminated-result)
    *reply_len = script.replyLen.value_or(copied);
    return script.requestResult;
}

int wpa_ctrl_get_fd(struct wpa_ctrl* ctrl) {
    Record(Op::kGetFd, ctrl);
    return GetState().script.fd.value_or(ctrl->fd);
}

int wpa_ctrl_recv(struct wpa_ctrl* ctrl, char* reply, size_t* reply_len) {
    Record(Op::kRecv, ctrl, {}, *reply_len);
    const std::optional<int> scripted = Pop(GetState().script.recvResults);
    if (scripted && *scripted < 0) return *scripted;
    // As the real client: one datagram, cut to the capacity offered.
    const ssize_t received = recv(ctrl->fd, reply, *reply_len, 0);
    if (received < 0) return -1;
    *reply_len = static_cast<size_t>(received);
    return 0;
}

int wpa_ctrl_pending(struct wpa_ctrl* ctrl) {
    Record(Op::kPending, ctrl);
    if (const std::optional<int> scripted = Pop(GetState().script.pendingResults)) {
        return *scripted;
    }
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(ctrl->fd, &readable);
    struct timeval now = {0, 0};
    return select(ctrl->fd + 1, &readable, nullptr, nullptr, &now) > 0 ? 1 : 0;
}

}  // extern "C"
