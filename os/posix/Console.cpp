#include "os/Console.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/stat.h>

#include <algorithm>

#include "base/Text.h"
#include "base/Trap.h"
#include "os/Watched.h"
#include "os/posix/FileDescriptor.h"

namespace os {
namespace {

using posix::FileDescriptor;

sigset_t EndingSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&signals, number);
    return signals;
}

class SignalWatch : public Watched {
 public:
    explicit SignalWatch(Console& console) : console_(console) {
        const auto signals = EndingSignals();
        ::pthread_sigmask(SIG_BLOCK, &signals, &before_);
        (void)::signal(SIGPIPE, SIG_IGN);
        descriptor_ = FileDescriptor(::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
        if (!descriptor_) posix::ThrowLastError();
        Watch(descriptor_.Get(), kReadable);
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
class LineWatch : public Watched {
 public:
    explicit LineWatch(Console& console) : console_(console) {}
    ~LineWatch() override { Unwatch(STDIN_FILENO); }

    void Start() {
        try {
            Watch(STDIN_FILENO, kReadable);
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
        Take({part, static_cast<std::size_t>(count)});
    }

    void Take(std::string_view part) {
        while (!part.empty()) {
            const bool ends = part.find('\n') != std::string_view::npos;
            unfinished_ += TakeUpTo(part, '\n');
            if (ends) Raise(std::exchange(unfinished_, {}));
            // Of a line that is too long already one byte too many is kept, which says so.
            if (unfinished_.size() > Console::kMaxLine) unfinished_.resize(Console::kMaxLine + 1);
        }
    }

    void Raise(std::string line) {
        Trap("EventLoop:Dispatch", [&] {
            if (line.size() > Console::kMaxLine) return console_.LineTooLong();
            if (line.ends_with('\r')) line.pop_back();
            console_.Line(line);
        });
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

// One of the two outputs. A terminal or pipe is opened a second time for writing without blocking: the flag
// would otherwise hold for the shell, too, with which the first opening is shared.
class Writer {
 public:
    explicit Writer(int file) : file_(file) {
        struct stat description {};
        if (::fstat(file, &description) != 0) return;
        mayBlock_ = !S_ISREG(description.st_mode);
        if (!mayBlock_) return;
        const auto path = "/proc/self/fd/" + std::to_string(file);
        own_ = FileDescriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        mayBlock_ = !own_;
        // Another user's terminal cannot be opened. What is ready to be written takes one byte for sure.
        if (!own_ && S_ISCHR(description.st_mode)) most_ = 1;
    }

    // The end of a text that was taken in part comes before anything else, so that lines stay whole.
    void Write(std::string_view text) {
        std::string_view rest = rest_;
        WriteSome(rest);
        rest_.erase(0, rest_.size() - rest.size());
        if (!rest_.empty()) return;
        const auto size = text.size();
        WriteSome(text);
        if (text.size() < size) rest_ = text;
    }

 private:
    void WriteSome(std::string_view& text) {
        while (!text.empty()) {
            pollfd ready{file_, POLLOUT, 0};
            if (mayBlock_ && (::poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0)) return;
            const auto written = ::write(own_ ? own_.Get() : file_, text.data(),
                                         std::min(text.size(), mayBlock_ ? most_ : text.size()));
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) return;
            text.remove_prefix(static_cast<std::size_t>(written));
        }
    }

    int file_;
    FileDescriptor own_;
    bool mayBlock_ = true;
    std::size_t most_ = PIPE_BUF;  // what a pipe or socket takes when it is ready
    std::string rest_;
};

Writer& WriterOf(Output output) {
    static Writer standard(STDOUT_FILENO);
    static Writer error(STDERR_FILENO);
    return output == Output::Standard ? standard : error;
}

}  // namespace

struct Console::Impl {
    explicit Impl(Console& console) : signals(console), lines(console) {}

    SignalWatch signals;
    LineWatch lines;
};

Console::Console() : impl_(std::make_unique<Impl>(*this)) {
    WriterOf(Output::Standard);  // both now, while there are descriptors
    WriterOf(Output::Error);
}
Console::~Console() = default;

void Console::ReadLines() {
    impl_->lines.Start();
}

void Print(Output output, std::string_view text) {
    WriterOf(output).Write(text);
}

void OpenStandardStreams() {
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(file, F_GETFD) < 0 && errno == EBADF) (void)::open("/dev/null", O_RDWR);
    }
}

}  // namespace os
