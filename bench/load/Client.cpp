#include "bench/load/Client.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "bench/load/Options.h"

namespace bench {

std::vector<Step> HandshakeSteps() {
    std::uint8_t hi = std::uint8_t(server.port >> 8), lo = std::uint8_t(server.port);
    if (options.route == Route::Socks4)
        return {{{4, 1, hi, lo, 127, 0, 0, 1, 'b', 'e', 'n', 'c', 'h', 0}, 8}};
    if (options.route == Route::Socks5) return {{{5, 1, 0}, 2}, {{5, 1, 0, 1, 127, 0, 0, 1, hi, lo}, 10}};
    return {};
}

bool ReplyGranted(const Bytes& r) {
    return options.route == Route::Socks4 ? r[0] == 0 && r[1] == 0x5A : r[0] == 5 && r[1] == 0;
}

sockaddr_in Target() {
    sockaddr_in a = options.proxy;
    if (!options.hasProxy) {
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        a.sin_port = htons(server.port);
    }
    return a;
}

int ClientSocket(int extraFlags) {
    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | extraFlags, 0);
    if (fd < 0) FailErrno("socket");
    int on = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    timeval limit{10, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    return fd;
}

void AwaitFrames(Stream& s, std::uint64_t total) {
    while (s.rxFrames < total) {
        s.Receive(0, [](const Frame&) {});
        if (s.peerClosed) Fail("connection closed while waiting for a frame");
    }
}

StreamPtr OpenConnection(bool awaitSignon) {
    auto s = std::make_unique<Stream>(ClientSocket(0), kClientFirstSeq);
    sockaddr_in a = Target();
    if (::connect(s->fd, reinterpret_cast<sockaddr*>(&a), sizeof a) < 0) FailErrno("connect");
    for (const Step& step : HandshakeSteps()) {
        if (::send(s->fd, step.send.data(), step.send.size(), MSG_NOSIGNAL) < 0) FailErrno("handshake");
        Bytes reply(step.expect);
        ssize_t n = ::recv(s->fd, reply.data(), reply.size(), MSG_WAITALL);
        if (n != ssize_t(step.expect)) Fail("proxy gave no full handshake reply");
        if (!ReplyGranted(reply)) Fail("proxy refused the connection");
    }
    if (options.signon) {  // like real clients: the hello goes out at once
        const std::uint8_t version[4] = {0, 0, 0, 1};
        s->QueueRaw(1, version, 4);
        if (!s->Flush(0)) FailErrno("hello");
    }
    if (options.signon && awaitSignon) AwaitFrames(*s, 1);
    return s;
}

void Command(Stream& s, Mode mode, std::uint64_t budget, std::uint64_t ms) {
    Bytes body(24);
    Store64(&body[0], mode);
    Store64(&body[8], budget);
    Store64(&body[16], ms);
    s.Queue(MakeTemplate(kCommand, body));
    if (!s.Flush(0)) FailErrno("send");
}

void Ping(Stream& s) {
    s.Queue(PingTemplate());
    if (!s.Flush(0)) FailErrno("send");
    AwaitFrames(s, s.rxFrames + 1);
}

void OpenPingClose() {
    StreamPtr s = OpenConnection();
    Ping(*s);
}

}  // namespace bench
