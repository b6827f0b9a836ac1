#include "os/win32/SocketMessages.h"

#include <utility>

#include "os/net/Watched.h"
#include "os/win32/SystemError.h"

namespace os {
namespace {

constexpr long kAllEvents = FD_READ | FD_WRITE | FD_ACCEPT | FD_CONNECT | FD_CLOSE;

}  // namespace

// What is ready already is told as well. An accepted socket has begun with the listener's messages, which are
// passed over.
void SocketMessages::Watch(SOCKET socket, net::Token token, std::uint32_t events, bool isNew) {
    if (isNew) {
        const UINT message = first_ + next_++ % count_;
        Announce(socket, message);
        entries_[socket] = {token, events, 0, message};
        sockets_[token] = socket;
    }
    auto& entry = entries_.at(socket);
    entry.wanted = events;
    List(entry);
}

void SocketMessages::Announce(SOCKET socket, UINT message) {
    if (WSAAsyncSelect(socket, window_, message, kAllEvents) != 0) {
        ThrowSystemError(static_cast<DWORD>(WSAGetLastError()));
    }
}

void SocketMessages::Unwatch(net::Token token) {
    const auto found = sockets_.find(token);
    if (found == sockets_.end()) return;
    WSAAsyncSelect(found->second, window_, 0, 0);
    Forget(token);
}

void SocketMessages::Forget(net::Token token) {
    const auto found = sockets_.find(token);
    if (found == sockets_.end()) return;
    entries_.erase(found->second);
    sockets_.erase(found);
}

void SocketMessages::Note(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto found = entries_.find(static_cast<SOCKET>(wParam));
    if (found == entries_.end() || found->second.message != message) return;
    auto& entry = found->second;
    const bool isError = WSAGETSELECTERROR(lParam) != 0;
    switch (WSAGETSELECTEVENT(lParam)) {
        case FD_CLOSE:
            if (isError) entry.pending |= net::kBroken;
            entry.isAtEnd = true;
            [[fallthrough]];
        case FD_READ:
            entry.pending |= net::kReadable;
            break;
        case FD_ACCEPT:
            entry.pending |= net::kReadable;
            entry.wasCalled = true;
            break;
        case FD_CONNECT:
            if (isError) entry.pending |= net::kBroken;
            [[fallthrough]];
        case FD_WRITE:
            entry.pending |= net::kWritable;
            break;
        default:
            return;
    }
    List(entry);
}

bool SocketMessages::Report(const bool& stop) {
    bool any = false;
    for (auto left = ready_.size(); left > 0 && !ready_.empty() && !stop; --left) {
        const auto token = ready_.front();
        ready_.pop_front();
        auto* entry = Find(token);
        if (entry == nullptr) continue;
        entry->isListed = false;
        const auto events = entry->pending & (entry->wanted | net::kBroken);
        if (events == 0) continue;
        entry->pending &= ~events;
        if (entry->isAtEnd) entry->pending |= net::kReadable;
        any = true;
        net::ReportReady(token, events);
        entry = Find(token);
        if (entry == nullptr) continue;
        // Wine tells of waiting clients again only after an accept that gave one, and a message that was on
        // its way when its client was taken already leads to an accept that gives none.
        if (std::exchange(entry->wasCalled, false)) Announce(sockets_.at(token), entry->message);
        List(*entry);
    }
    return any;
}

void SocketMessages::List(Entry& entry) {
    if (entry.isListed || (entry.pending & (entry.wanted | net::kBroken)) == 0) return;
    entry.isListed = true;
    ready_.push_back(entry.token);
}

SocketMessages::Entry* SocketMessages::Find(net::Token token) {
    const auto found = sockets_.find(token);
    return found == sockets_.end() ? nullptr : &entries_.at(found->second);
}

}  // namespace os
