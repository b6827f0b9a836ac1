#include "os/win32/SocketWaiter.h"

#include <algorithm>

#include "os/net/Watched.h"
#include "os/win32/SystemError.h"

namespace os {
namespace {

// The sets that select() takes: a count, then that many sockets. The system's own type has room for 64 of
// them; the call goes by the count.
class SocketSet {
 public:
    void Add(SOCKET socket) { sockets_.push_back(socket); }

    fd_set* Native() {
        static_assert(offsetof(fd_set, fd_array) == sizeof(SOCKET));
        Count() = static_cast<u_int>(sockets_.size() - 1);
        return Count() == 0 ? nullptr : reinterpret_cast<fd_set*>(sockets_.data());
    }

    // After select(): those that are ready.
    template <typename Visit>
    void ForEach(Visit visit) {
        for (std::size_t i = 1; i <= Count(); ++i) visit(sockets_[i]);
    }

 private:
    u_int& Count() { return *reinterpret_cast<u_int*>(sockets_.data()); }

    std::vector<SOCKET> sockets_ = std::vector<SOCKET>(1);  // the first place is the count's
};

SOCKET OpenRecall() {
    WSADATA data;
    if (const int failure = WSAStartup(MAKEWORD(2, 2), &data)) ThrowSystemError(static_cast<DWORD>(failure));
    const SOCKET recall = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    u_long nonBlocking = 1;
    if (recall == INVALID_SOCKET || bind(recall, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(recall, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
        connect(recall, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ioctlsocket(recall, static_cast<long>(FIONBIO), &nonBlocking) != 0) {
        ThrowSystemError(static_cast<DWORD>(WSAGetLastError()));
    }
    return recall;
}

}  // namespace

SocketWaiter::SocketWaiter(HWND window, UINT message)
    : window_(window),
      message_(message),
      recall_(OpenRecall()),
      handedOver_(CreateEventA(nullptr, FALSE, FALSE, nullptr)),
      givenBack_(CreateEventA(nullptr, FALSE, FALSE, nullptr)) {
    const HANDLE thread = CreateThread(nullptr, 0, Run, this, 0, nullptr);
    if (handedOver_ == nullptr || givenBack_ == nullptr || thread == nullptr) ThrowLastError();
    CloseHandle(thread);
}

void SocketWaiter::Add(SOCKET socket, net::Token token, std::uint32_t events) {
    wanted_[token] = {socket, token, events};
    NoteChange();
}

void SocketWaiter::Remove(net::Token token) {
    if (wanted_.erase(token) > 0) NoteChange();
}

void SocketWaiter::NoteChange() {
    isChanged_ = true;
    if (!isWithThread_ || std::exchange(isRecalled_, true)) return;
    send(recall_, "", 1, 0);
}

std::vector<SocketWaiter::Report> SocketWaiter::TakeBack(bool now) {
    if (!isWithThread_) return {};
    if (now) NoteChange();
    if (WaitForSingleObject(givenBack_, now ? INFINITE : 0) != WAIT_OBJECT_0) return {};
    isWithThread_ = false;
    isRecalled_ = false;
    return std::exchange(reports_, {});
}

std::vector<SocketWaiter::Report> SocketWaiter::Poll() {
    if (isWithThread_) return {};
    Update();
    timeval atOnce{0, 0};
    return Select(list_, INVALID_SOCKET, &atOnce);
}

void SocketWaiter::HandOver() {
    if (isWithThread_) return;
    Update();
    isWithThread_ = true;
    SetEvent(handedOver_);
}

void SocketWaiter::Update() {
    if (!std::exchange(isChanged_, false)) return;
    list_.clear();
    for (const auto& [token, entry] : wanted_) {
        if (entry.events != 0) list_.push_back(entry);
    }
    std::sort(list_.begin(), list_.end(), [](const Entry& a, const Entry& b) { return a.socket < b.socket; });
}

DWORD CALLBACK SocketWaiter::Run(void* self) {
    static_cast<SocketWaiter*>(self)->Wait();
    return 0;
}

void SocketWaiter::Wait() {
    while (WaitForSingleObject(handedOver_, INFINITE) == WAIT_OBJECT_0) {
        reports_ = Select(list_, recall_, nullptr);
        char drained[64];
        while (recv(recall_, drained, sizeof drained, 0) > 0) {
        }
        SetEvent(givenBack_);
        PostMessageA(window_, message_, 0, 0);
    }
}

// A failing call, because a socket of the list has just been closed, counts as nothing ready: the list is
// about to be brought up to date.
std::vector<SocketWaiter::Report> SocketWaiter::Select(const std::vector<Entry>& entries, SOCKET recall,
                                                       timeval* limit) {
    SocketSet readable, writable, broken;
    for (const auto& entry : entries) {
        if ((entry.events & net::kReadable) != 0) readable.Add(entry.socket);
        if ((entry.events & net::kWritable) == 0) continue;
        writable.Add(entry.socket);
        broken.Add(entry.socket);  // a connection that cannot be made is told here
    }
    if (recall != INVALID_SOCKET) readable.Add(recall);
    auto* const readableSet = readable.Native();
    auto* const writableSet = writable.Native();
    auto* const brokenSet = broken.Native();
    if (readableSet == nullptr && writableSet == nullptr) return {};
    if (select(0, readableSet, writableSet, brokenSet, limit) <= 0) return {};

    std::map<net::Token, std::uint32_t> ready;
    const auto note = [&](std::uint32_t event) {
        return [&ready, &entries, event](SOCKET socket) {
            const auto entry = std::lower_bound(
                entries.begin(), entries.end(), socket,
                [](const Entry& candidate, SOCKET wanted) { return candidate.socket < wanted; });
            if (entry != entries.end() && entry->socket == socket) ready[entry->token] |= event;
        };
    };
    readable.ForEach(note(net::kReadable));
    writable.ForEach(note(net::kWritable));
    broken.ForEach(note(net::kBroken));
    std::vector<Report> reports;
    for (const auto& [token, events] : ready) reports.push_back({token, events});
    return reports;
}

}  // namespace os
