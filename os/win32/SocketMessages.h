// SocketMessages: what the system's window messages (WSAAsyncSelect) tell of sockets, kept as readiness.
//
// The messages tell of changes, each once: that there is something to read is told again after the next read,
// that there is room to send only after the next refusal, and the peer's end never again. Here it is kept
// until somebody who wants it has been told, so that nothing is missed while a socket is held, and a socket
// at its end stays readable until the end has been read.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_map>

#include "os/Waiting.h"

namespace os {

class SocketMessages {
 public:
    // The window is sent messages of the numbers from `first` on, so many.
    SocketMessages(HWND window, UINT first, UINT count) : window_(window), first_(first), count_(count) {}
    SocketMessages(const SocketMessages&) = delete;
    SocketMessages& operator=(const SocketMessages&) = delete;

    bool Owns(UINT message) const { return message >= first_ && message < first_ + count_; }
    void Note(UINT message, WPARAM wParam, LPARAM lParam);

    // Waits for the events of the socket from now on. Throws RuntimeError.
    void Watch(SOCKET socket, Token token, std::uint32_t events, bool isNew);
    // The socket stays open.
    void Unwatch(Token token);
    // Nothing to do for a token that is not waited for.
    void Forget(Token token);

    // Reports what is ready by now, each socket once; stops when `stop` has become true. Whether there was
    // any.
    bool Report(const bool& stop);
    bool AnyReady() const { return !ready_.empty(); }

 private:
    struct Entry {
        Token token;
        std::uint32_t wanted;
        std::uint32_t pending;  // ready, and nobody has been told yet
        UINT message;           // tells the socket from an earlier one of the same number
        long told = 0;          // FD_ events that the system tells of
        bool isAtEnd = false;
        bool isListed = false;  // in ready_
    };

    void List(Entry& entry);
    Entry* Find(Token token);

    HWND window_;
    UINT first_;
    UINT count_;
    UINT next_ = 0;
    std::unordered_map<SOCKET, Entry> entries_;
    std::unordered_map<Token, SOCKET> sockets_;
    std::deque<Token> ready_;
};

}  // namespace os
