#include "bench/load/Server.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <utility>

#include "bench/load/Options.h"

namespace bench {

Server server;

struct Server::Peer {
    Stream stream;
    Mode mode = kEcho;
    bool held = false;
    bool finishing = false;  // close once everything is sent
    std::uint32_t watched = EPOLLIN;
    explicit Peer(int fd) : stream(fd, 1) {}
};

void Server::Start() {
    listenFd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int on = 1;
    setsockopt(listenFd_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // By default the first free port from 24000 on: below the range that outgoing
    // connections use, which the churn scenario can fill up.
    port = options.listenPort ? options.listenPort : 24000;
    for (;; ++port) {
        a.sin_port = htons(port);
        if (::bind(listenFd_, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
            ::listen(listenFd_, 4096) == 0)
            break;
        if (options.listenPort || port == 24999) FailErrno("cannot listen");
    }
    epoll_ = ::epoll_create1(EPOLL_CLOEXEC);
    Watch(EPOLL_CTL_ADD, listenFd_, EPOLLIN, nullptr);
    thread_ = std::thread([this] { Run(); });
}

void Server::Stop() {
    quit_ = true;
    thread_.join();
    ::close(listenFd_);
    ::close(epoll_);
}

std::vector<std::string> Server::TakeErrors() {
    std::lock_guard lock(mutex_);
    return std::exchange(errors_, {});
}

void Server::Watch(int op, int fd, std::uint32_t events, void* tag) {
    epoll_event e{};
    e.events = events;
    e.data.ptr = tag;
    epoll_ctl(epoll_, op, fd, &e);
}

void Server::Run() {
    epoll_event events[256];
    while (!quit_) {
        int n = ::epoll_wait(epoll_, events, 256, 20);
        for (int i = 0; i < n; ++i) {
            if (!events[i].data.ptr)
                AcceptSome();
            else
                Serve(static_cast<Peer*>(events[i].data.ptr), events[i].events);
        }
        if (releaseHeld.exchange(false))
            for (Peer* p : peers_) {
                p->held = false;
                Update(p);
            }
    }
    while (!peers_.empty()) Drop(*peers_.begin());
}

void Server::AcceptSome() {
    int fd = ::accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) return;
    int on = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    auto* p = new Peer(fd);
    peers_.insert(p);
    ++openConnections;
    Watch(EPOLL_CTL_ADD, fd, EPOLLIN, p);
    if (options.signon) {
        const std::uint8_t version[4] = {0, 0, 0, 1};
        p->stream.QueueRaw(1, version, 4);
        if (!p->stream.Flush(MSG_DONTWAIT)) Drop(p);
    }
}

void Server::Serve(Peer* p, std::uint32_t events) {
    Stream& s = p->stream;
    try {
        if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) && !p->held)
            s.Receive(MSG_DONTWAIT, [&](const Frame& f) { HandleFrame(p, f); });
        bool gone = s.peerClosed || !s.Flush(MSG_DONTWAIT);
        if (p->mode == kSource || p->mode == kBoth) bytesSent = s.txBytes;
        if (gone || (p->finishing && !s.HasOutput())) return Drop(p);
    } catch (const std::exception& e) {
        std::lock_guard lock(mutex_);
        errors_.push_back(std::string("at the server: ") + e.what());
        return Drop(p);
    }
    Update(p);
}

void Server::HandleFrame(Peer* p, const Frame& f) {
    Stream& s = p->stream;
    if (f.subtype == kCommand) {
        p->mode = Mode(Load64(f.Body()));
        p->held = p->mode == kSinkHeld;
        if (p->mode == kSource || p->mode == kBoth) {
            s.source = true;
            s.sourceBudget = Load64(f.Body() + 8);
            s.sourceUntil = Now() + double(Load64(f.Body() + 16)) / 1000;
            p->finishing = p->mode == kSource;
        }
    } else if (f.subtype == kEnd) {
        if (Load64(f.Body()) + 1 != s.rxFrames) Fail("frames missing before the end frame");
        s.QueueCounts(kAck, s.rxFrames, s.rxBytes);
    } else if (p->mode == kEcho && f.channel != 1) {  // a hello is not echoed
        s.QueueRaw(f.channel, f.payload, f.length);
    }
}

void Server::Update(Peer* p) {
    std::uint32_t want =
        (p->held ? 0u : std::uint32_t(EPOLLIN)) | (p->stream.HasOutput() ? std::uint32_t(EPOLLOUT) : 0u);
    if (want != p->watched) Watch(EPOLL_CTL_MOD, p->stream.fd, want, p);
    p->watched = want;
}

void Server::Drop(Peer* p) {
    // When the other side has closed already, end with a reset, which spares the
    // proxy's port the TIME_WAIT state: thousands of those would use up its ports.
    if (p->stream.peerClosed) {
        linger reset{1, 0};
        setsockopt(p->stream.fd, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    }
    peers_.erase(p);
    --openConnections;
    delete p;
}

void WaitUntilServerIsIdle() {
    for (int i = 0; i < 100 && server.openConnections > 0; ++i) PauseMs(50);
    PauseMs(100);
}

}  // namespace bench
