#include "os/posix/Reactor.h"

#include <sys/epoll.h>

#include <cerrno>

#include "os/net/Waiting.h"
#include "os/net/Watched.h"
#include "os/posix/FileDescriptor.h"

namespace {

constexpr int kBatch = 128;  // events taken from the system at once

// Never closed: sockets of static storage close after the end of main.
int Epoll() {
    static const int epoll = ::epoll_create1(EPOLL_CLOEXEC);
    if (epoll < 0) os::posix::ThrowLastError();
    return epoll;
}

std::uint32_t EventsFrom(std::uint32_t system) {
    std::uint32_t events = 0;
    if ((system & EPOLLIN) != 0) events |= os::net::kReadable;
    if ((system & EPOLLOUT) != 0) events |= os::net::kWritable;
    if ((system & (EPOLLERR | EPOLLHUP)) != 0) events |= os::net::kBroken;
    return events;
}

}  // namespace

namespace os::net {

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

}  // namespace os::net

namespace os::posix {

bool HandleReadyWatches(int timeoutMs, const bool& stop) {
    epoll_event events[kBatch];
    const int count = ::epoll_wait(Epoll(), events, kBatch, net::AnyWoken() ? 0 : timeoutMs);
    if (count < 0 && errno != EINTR) ThrowLastError();

    for (int index = 0; index < count; ++index) {
        net::ReportReady(events[index].data.u64, EventsFrom(events[index].events));
        if (stop) return true;
    }
    return net::HandleWoken(stop) || count > 0;
}

}  // namespace os::posix
