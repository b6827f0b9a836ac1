#include "os/win32/SocketMessages.h"

#include "os/Watched.h"
#include "os/win32/SystemError.h"

namespace os {
namespace {

// What the system is to tell of. Each message costs, so that of room to send, which comes once in advance, is
// asked for only when something waits to be sent; a socket that waits to be writable from the start connects.
long EventsToTell(std::uint32_t events, bool isNew) {
    if ((events & kAcceptable) != 0) return FD_ACCEPT;
    const long room = !isNew && (events & kWritable) != 0 ? FD_WRITE : 0;
    return FD_READ | FD_CONNECT | FD_CLOSE | room;
}

}  // namespace

// What is ready already is told as well.
void SocketMessages::Watch(SOCKET socket, Token token, std::uint32_t events, bool isNew) {
    if (isNew) {
        entries_[socket] = {token, events, 0, first_ + next_++ % count_};
        sockets_[token] = socket;
    }
    auto& entry = entries_.at(socket);
    entry.wanted = events;
    const long told = entry.told | EventsToTell(events, isNew);
    if (told != entry.told) {
        if (WSAAsyncSelect(socket, window_, entry.message, told) != 0) {
            const auto number = static_cast<DWORD>(WSAGetLastError());
            if (isNew) Forget(token);
            ThrowSystemError(number);
        }
        entry.told = told;
    }
    List(entry);
}

void SocketMessages::Unwatch(Token token) {
    const auto found = sockets_.find(token);
    if (found == sockets_.end()) return;
    WSAAsyncSelect(found->second, window_, 0, 0);
    Forget(token);
}

void SocketMessages::Forget(Token token) {
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
            if (isError) entry.pending |= kBroken;
            entry.isAtEnd = true;
            [[fallthrough]];
        case FD_READ:
            entry.pending |= kReadable;
            break;
        case FD_ACCEPT:
            entry.pending |= kAcceptable;
            break;
        case FD_CONNECT:
            if (isError) entry.pending |= kBroken;
            [[fallthrough]];
        case FD_WRITE:
            entry.pending |= kWritable;
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
        const auto events = entry->pending & (entry->wanted | kBroken);
        if (events == 0) continue;
        entry->pending &= ~events;
        if (entry->isAtEnd) entry->pending |= kReadable;
        any = true;
        ReportReady(token, events);
        entry = Find(token);
        if (entry != nullptr) List(*entry);
    }
    return any;
}

void SocketMessages::List(Entry& entry) {
    if (entry.isListed || (entry.pending & (entry.wanted | kBroken)) == 0) return;
    entry.isListed = true;
    ready_.push_back(entry.token);
}

SocketMessages::Entry* SocketMessages::Find(Token token) {
    const auto found = sockets_.find(token);
    return found == sockets_.end() ? nullptr : &entries_.at(found->second);
}

}  // namespace os
