#include "os/Console.h"

#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>

#include <algorithm>

#include "base/Trap.h"
#include "os/net/Watched.h"
#include "os/posix/FileDescriptor.h"
#include "os/posix/SystemText.h"

namespace os {
namespace {

using posix::FileDescriptor;

sigset_t EndingSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&signals, number);
    return signals;
}

class SignalWatch : public net::Watched {
 public:
    explicit SignalWatch(Console& console) : console_(console) {
        const auto signals = EndingSignals();
        ::pthread_sigmask(SIG_BLOCK, &signals, &before_);
        (void)::signal(SIGPIPE, SIG_IGN);
        descriptor_ = FileDescriptor(::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
        if (!descriptor_) posix::ThrowLastError();
        Watch(descriptor_.Get(), net::kReadable);
    }
    ~SignalWatch() override { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
    void Ready(std::uint32_t) override {
        signalfd_siginfo signal{};
        if (::read(descriptor_.Get(), &signal, sizeof signal) != sizeof signal) return;
        Trap("EventLoop:Dispatch", [this] { console_.Interrupted(); });
    }

    Console& console_;
    sigset_t before_{};
    FileDescriptor descriptor_;
};

// Standard input is not made non-blocking, because that would change it for the shell too: one read answers
// one report. Regular files cannot be watched and need not be: they are always ready.
class LineWatch : public net::Watched {
 public:
    explicit LineWatch(Console& console) : console_(console) {}
    ~LineWatch() override { Unwatch(STDIN_FILENO); }

    void Start() {
        try {
            Watch(STDIN_FILENO, net::kReadable);
        } catch (const RuntimeError& error) {
            if (error.Number() != EPERM) throw;
            alwaysReady_ = true;
            Wake();
        }
    }

 private:
    void Ready(std::uint32_t) override {
        char part[4096];
        const auto count = ::read(STDIN_FILENO, part, sizeof part);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
        if (count <= 0) return End();
        if (alwaysReady_) Wake();
        unfinished_.append(part, static_cast<std::size_t>(count));
        RaiseLines();
    }

    void RaiseLines() {
        for (auto end = unfinished_.find('\n'); end != std::string::npos; end = unfinished_.find('\n')) {
            auto line = unfinished_.substr(0, end);
            unfinished_.erase(0, end + 1);
            Raise(std::move(line));
        }
        if (unfinished_.size() >= Console::kLongestLine) Raise(std::exchange(unfinished_, {}));
    }

    void Raise(std::string line) {
        if (line.ends_with('\r')) line.pop_back();
        Trap("EventLoop:Dispatch", [&] { console_.Line(line); });
    }

    void End() {
        Unwatch(STDIN_FILENO);
        if (!unfinished_.empty()) Raise(std::exchange(unfinished_, {}));
        Trap("EventLoop:Dispatch", [this] { console_.InputEnded(); });
    }

    Console& console_;
    std::string unfinished_;
    bool alwaysReady_ = false;
};

}  // namespace

struct Console::Impl {
    explicit Impl(Console& console) : signals(console), lines(console) {}

    SignalWatch signals;
    LineWatch lines;
};

Console::Console() : impl_(std::make_unique<Impl>(*this)) {}
Console::~Console() = default;

void Console::ReadLines() {
    impl_->lines.Start();
}

// A pipe that can be written to takes PIPE_BUF bytes without blocking.
void Print(Output output, std::string_view systemText) {
    const int file = output == Output::Standard ? STDOUT_FILENO : STDERR_FILENO;
    while (!systemText.empty()) {
        pollfd ready{file, POLLOUT, 0};
        if (::poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0) return;
        const auto written =
            ::write(file, systemText.data(), std::min<std::size_t>(systemText.size(), PIPE_BUF));
        if (written <= 0) return;
        systemText.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string TextFromSystem(std::string_view systemText) {
    return posix::TextFromUtf8(systemText);
}

std::string SystemFromText(std::string_view text) {
    return posix::Utf8FromText(text);
}

}  // namespace os
