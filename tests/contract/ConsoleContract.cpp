// The contract of os/Console.h: lines of standard input and the signals that end a program.
#include "os/Console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <vector>

#include "os/EventLoop.h"

namespace {

constexpr std::int64_t kBoundMs = 20'000;

// Puts a descriptor in the place of standard input.
class StandardInput {
 public:
    explicit StandardInput(int descriptor) : before_(::dup(STDIN_FILENO)) {
        ::dup2(descriptor, STDIN_FILENO);
        ::close(descriptor);
    }
    ~StandardInput() {
        ::dup2(before_, STDIN_FILENO);
        ::close(before_);
    }

 private:
    int before_;
};

struct Listener {
    explicit Listener(os::Console& console) {
        console.Line.Bind<&Listener::console_Line>(*this);
        console.InputEnded.Bind<&Listener::console_InputEnded>(*this);
        console.Interrupted.Bind<&Listener::console_Interrupted>(*this);
    }
    void console_Line(const std::string& line) { lines.push_back(line); }
    void console_InputEnded() { ended = true; }
    void console_Interrupted() { ++interruptions; }

    std::vector<std::string> lines;
    bool ended = false;
    int interruptions = 0;
};

void Write(int descriptor, std::string_view bytes) {
    ASSERT_EQ(::write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

TEST(ConsoleContract, LinesOfAPipeComeWholeAndItsEndIsTold) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const StandardInput input(ends[0]);
    os::Console console;
    Listener listener(console);
    console.ReadLines();
    Write(ends[1], "one\ntw");
    ASSERT_TRUE(os::RunEventLoopUntil([&] { return listener.lines.size() == 1; }, kBoundMs));
    Write(ends[1], "o\r\n\nlast");
    ::close(ends[1]);
    ASSERT_TRUE(os::RunEventLoopUntil([&] { return listener.ended; }, kBoundMs));
    EXPECT_EQ(listener.lines, (std::vector<std::string>{"one", "two", "", "last"}));
}

TEST(ConsoleContract, AFileAsInputIsReadToItsEnd) {
    char name[] = "console-input-XXXXXX";
    const int file = ::mkstemp(name);
    ASSERT_GE(file, 0);
    ::unlink(name);
    Write(file, "one\ntwo\n");
    ::lseek(file, 0, SEEK_SET);
    const StandardInput input(file);
    os::Console console;
    Listener listener(console);
    console.ReadLines();
    ASSERT_TRUE(os::RunEventLoopUntil([&] { return listener.ended; }, kBoundMs));
    EXPECT_EQ(listener.lines, (std::vector<std::string>{"one", "two"}));
}

TEST(ConsoleContract, SignalsAreToldInsteadOfEndingTheProgram) {
    os::Console console;
    Listener listener(console);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::raise(number);
    EXPECT_EQ(listener.interruptions, 0);
    EXPECT_TRUE(os::RunEventLoopUntil([&] { return listener.interruptions == 3; }, kBoundMs));
}

}  // namespace
