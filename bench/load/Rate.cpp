#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <memory>

#include "bench/load/Client.h"
#include "bench/load/Options.h"
#include "bench/load/ProxyUse.h"
#include "bench/load/Results.h"
#include "bench/load/Scenarios.h"

namespace bench {

void RateSequential() {
    CpuMeter cpu;
    double start = Now();
    int done = 0;
    while (Now() - start < options.seconds) {
        OpenPingClose();
        ++done;
    }
    Report("rate.sequential.conns_s", done / (Now() - start), "conns/s");
    if (!options.proxyPids.empty()) Report("rate.sequential.cpu_us_per_conn", cpu.Used() * 1e6 / done, "us");
}

// 64 connections under way at any time, each a small state machine on one epoll.
void RateConcurrent() {
    struct Attempt {
        StreamPtr stream;
        std::size_t step = 0;  // handshake steps sent so far
        Bytes reply;
        bool pinged = false;
    };
    const std::vector<Step> steps = HandshakeSteps();
    sockaddr_in a = Target();
    int ep = ::epoll_create1(EPOLL_CLOEXEC);
    std::vector<Attempt> attempts(64);
    int done = 0, broken = 0;

    auto begin = [&](Attempt& at) {
        at = Attempt{};
        at.stream = std::make_unique<Stream>(ClientSocket(SOCK_NONBLOCK), kClientFirstSeq);
        int fd = at.stream->fd;
        if (::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) < 0 && errno != EINPROGRESS)
            FailErrno("connect");
        epoll_event e{};
        e.events = EPOLLOUT;
        e.data.ptr = &at;
        epoll_ctl(ep, EPOLL_CTL_ADD, fd, &e);
    };
    auto sendNext = [&](Attempt& at) {  // next handshake step, or the ping after the last one
        Stream& s = *at.stream;
        if (at.step < steps.size()) {
            const Step& step = steps[at.step++];
            at.reply.clear();
            if (::send(s.fd, step.send.data(), step.send.size(), MSG_NOSIGNAL) < 0) FailErrno("send");
        } else if (!at.pinged) {
            at.pinged = true;
            s.Queue(PingTemplate());
            if (!s.Flush(MSG_DONTWAIT)) FailErrno("send");
        }
    };
    auto proceed = [&](Attempt& at, std::uint32_t events) {  // true when the attempt is complete
        Stream& s = *at.stream;
        if (events & EPOLLOUT) {
            int error = 0;
            socklen_t n = sizeof error;
            getsockopt(s.fd, SOL_SOCKET, SO_ERROR, &error, &n);
            if (error) {
                errno = error;
                FailErrno("connect");
            }
            epoll_event e{};
            e.events = EPOLLIN;
            e.data.ptr = &at;
            epoll_ctl(ep, EPOLL_CTL_MOD, s.fd, &e);
            sendNext(at);
            return false;
        }
        if (at.pinged) {
            s.Receive(MSG_DONTWAIT, [](const Frame&) {});
            if (s.peerClosed) Fail("closed early");
            return s.rxFrames == (options.signon ? 2u : 1u);
        }
        std::uint8_t buffer[16];
        std::size_t want = steps[at.step - 1].expect - at.reply.size();
        ssize_t n = ::recv(s.fd, buffer, want, 0);
        if (n < 0 && errno == EAGAIN) return false;
        if (n <= 0) Fail("closed in the handshake");
        at.reply.insert(at.reply.end(), buffer, buffer + n);
        if (std::size_t(n) == want) {
            if (!ReplyGranted(at.reply)) Fail("refused");
            sendNext(at);
        }
        return false;
    };

    CpuMeter cpu;
    double start = Now();
    std::string lastError;
    for (auto& at : attempts) begin(at);
    epoll_event events[64];
    while (Now() - start < options.seconds) {
        int n = ::epoll_wait(ep, events, 64, 100);
        for (int i = 0; i < n; ++i) {
            auto& at = *static_cast<Attempt*>(events[i].data.ptr);
            bool complete = false;
            try {
                complete = proceed(at, events[i].events);
            } catch (const std::exception& e) {
                ++broken;
                lastError = e.what();
                begin(at);
            }
            if (complete) {
                ++done;
                begin(at);
            }
        }
    }
    Report("rate.concurrent64.conns_s", done / (Now() - start), "conns/s");
    if (!options.proxyPids.empty() && done)
        Report("rate.concurrent64.cpu_us_per_conn", cpu.Used() * 1e6 / done, "us");
    attempts.clear();
    ::close(ep);
    if (broken)
        Fail(std::to_string(broken) + " connections broken, " + std::to_string(done) +
             " good, last: " + lastError);
}

}  // namespace bench
