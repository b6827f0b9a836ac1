#include "os/Waiting.h"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>

#include "os/posix/FileDescriptor.h"

namespace os {
namespace {

constexpr std::size_t kBatch = 128;

// Never closed: sockets of static storage close after the end of main.
int Epoll() {
    static const int epoll = ::epoll_create1(EPOLL_CLOEXEC);
    if (epoll < 0) posix::ThrowLastError();
    return epoll;
}

std::uint32_t EventsFrom(std::uint32_t system) {
    std::uint32_t events = 0;
    if ((system & EPOLLIN) != 0) events |= kReadable;
    if ((system & EPOLLOUT) != 0) events |= kWritable;
    if ((system & (EPOLLERR | EPOLLHUP)) != 0) events |= kBroken;
    return events;
}

}  // namespace

void WaitFor(SocketHandle socket, Token token, std::uint32_t events, bool isNew) {
    epoll_event wanted{};
    if ((events & (kReadable | kAcceptable)) != 0) wanted.events |= EPOLLIN;
    if ((events & kWritable) != 0) wanted.events |= EPOLLOUT;
    wanted.data.u64 = token;
    const int operation = isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
    if (::epoll_ctl(Epoll(), operation, static_cast<int>(socket), &wanted) != 0) posix::ThrowLastError();
}

void StopWaitingFor(SocketHandle socket, Token) {
    ::epoll_ctl(Epoll(), EPOLL_CTL_DEL, static_cast<int>(socket), nullptr);
}

// Closing takes it out of epoll.
void ForgetWaiting(Token) {}

// Every turn looks for it before it waits.
void LoopHasWork() {}

std::size_t WaitUntilReady(std::span<ReadyToken> ready, std::int64_t milliseconds) {
    epoll_event events[kBatch];
    const auto room = static_cast<int>(std::min(ready.size(), kBatch));
    const int count = ::epoll_wait(Epoll(), events, room, static_cast<int>(milliseconds));
    if (count < 0 && errno != EINTR) posix::ThrowLastError();
    for (int index = 0; index < count; ++index) {
        const auto& event = events[index];
        ready[static_cast<std::size_t>(index)] = {event.data.u64, EventsFrom(event.events)};
    }
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace os
