// SocketWaiter: waits for many sockets at once, on a thread that does nothing else.
//
// The thread and the loop take turns with one list. The loop fills in what to wait for and hands the list
// over; the thread waits in select() until something is ready, notes what, posts one message and then waits
// to be handed the list again. So at most one wake-up is on its way however many sockets are busy, nothing is
// locked, and it works inside the modal loops of message boxes and menus, which deliver the message too.
// When what to wait for changes while the thread has the list, the thread is made to give it back.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <cstdint>
#include <map>
#include <vector>

#include "os/net/Waiting.h"

namespace os {

class SocketWaiter {
 public:
    struct Report {
        net::Token token;
        std::uint32_t events;
    };

    // The window is sent the message, which carries nothing, when the list is back. Throws RuntimeError.
    SocketWaiter(HWND window, UINT message);
    SocketWaiter(const SocketWaiter&) = delete;
    SocketWaiter& operator=(const SocketWaiter&) = delete;

    void Add(SOCKET socket, net::Token token, std::uint32_t events);
    void Remove(net::Token token);

    // Takes the list from the thread if it has finished, or in any case when `now`; what the thread found.
    // Tokens that have been given up meanwhile may be among it.
    std::vector<Report> TakeBack(bool now);

    // What is ready at this moment; for a list that has been taken back.
    std::vector<Report> Poll();

    // Hands the list to the thread, brought up to date.
    void HandOver();

 private:
    struct Entry {
        SOCKET socket;
        net::Token token;
        std::uint32_t events;
    };

    static DWORD CALLBACK Run(void* self);
    void Wait();
    void Update();
    void NoteChange();
    static std::vector<Report> Select(const std::vector<Entry>& entries, SOCKET recall, timeval* limit);

    HWND window_;
    UINT message_;
    std::map<net::Token, Entry> wanted_;  // the loop's own
    bool isChanged_ = false;              // wanted_ differs from the list
    bool isWithThread_ = false;
    bool isRecalled_ = false;
    std::vector<Entry> list_;  // by socket; whoever has the list
    std::vector<Report> reports_;
    SOCKET recall_;      // a datagram socket connected to itself: sending to it ends the thread's select()
    HANDLE handedOver_;  // events that pass the list
    HANDLE givenBack_;
};

}  // namespace os
