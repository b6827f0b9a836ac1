// What the system does to sockets, messages and files that no portable test can see: programs that inherit,
// queues that are full, two that write at once, errors without a text.
#include <gtest/gtest.h>
#include <winsock2.h>

#include <windows.h>

#include <atomic>
#include <string>
#include <vector>

#include "net/EventLoop.h"
#include "net/Tcp.h"
#include "os/Files.h"
#include "os/Sockets.h"
#include "os/win32/Handle.h"
#include "os/win32/SystemError.h"
#include "tests/win32/ImportPatch.h"

namespace {

bool IsInherited(const os::Socket& socket) {
    DWORD flags = HANDLE_FLAG_INHERIT;
    GetHandleInformation(reinterpret_cast<HANDLE>(socket.Get()), &flags);
    return (flags & HANDLE_FLAG_INHERIT) != 0;
}

// A program that we start, AIM for one, would hold port and connections open.
TEST(OnTheSystem, NoSocketIsInherited) {
    const auto listening = os::ListenOnLoopback(0);
    const auto client = os::OpenSocket({{127, 0, 0, 1}, false});
    os::StartConnecting(client.Get(), {{127, 0, 0, 1}, false}, os::PortOf(listening.Get()));
    os::Socket accepted;
    const auto begun = GetTickCount();
    while (os::AcceptClient(listening.Get(), accepted) == os::AcceptOutcome::NobodyWaits &&
           GetTickCount() - begun < 10'000)
        Sleep(1);
    ASSERT_TRUE(accepted);
    EXPECT_FALSE(IsInherited(listening));
    EXPECT_FALSE(IsInherited(client));
    EXPECT_FALSE(IsInherited(accepted));
}

ImportPatch<decltype(&PostMessageA)>* posting = nullptr;
DWORD refusedThread = 0;  // or every other one, with `refusesOthers`
bool refusesOthers = false;
std::atomic<int> refusals;

// As a queue that is full does.
BOOL WINAPI RefuseSome(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool isMeant = (GetCurrentThreadId() == refusedThread) != refusesOthers;
    if (isMeant && refusals > 0) {
        --refusals;
        SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return FALSE;
    }
    return posting->Original()(window, message, wParam, lParam);
}

class FullQueue : public testing::Test {
 protected:
    FullQueue() : patch_("PostMessageA", RefuseSome) {
        posting = &patch_;
        refusals = 0;
        refusedThread = GetCurrentThreadId();
    }
    ~FullQueue() override { posting = nullptr; }

    static constexpr std::int64_t kPatienceMs = 10'000;

 private:
    ImportPatch<decltype(&PostMessageA)> patch_;
};

TEST_F(FullQueue, ALookedUpNameIsToldAllTheSame) {
    refusesOthers = true;  // the look-up has a thread of its own
    refusals = 2;
    net::TcpListener listener;
    listener.Listen(0);
    net::TcpSocket socket;
    bool isConnected = false;
    auto note = [&] { isConnected = true; };
    socket.Connected.Bind(note);
    socket.Connect("localhost", listener.Port());
    EXPECT_TRUE(net::RunEventLoopUntil([&] { return isConnected; }, kPatienceMs));
    EXPECT_EQ(refusals, 0) << "nothing was refused";
}

TEST(OnTheSystem, ErrorsOfSocketsThatAUserCanMeetHaveATextOfOneLine) {
    std::vector<std::int32_t> numbers{10013, 10048};
    for (std::int32_t number = 10049; number <= 10065; ++number) numbers.push_back(number);
    for (std::int32_t number = 11001; number <= 11004; ++number) numbers.push_back(number);
    for (const auto number : numbers) {
        try {
            os::ThrowSystemError(static_cast<DWORD>(number));
        } catch (const RuntimeError& error) {
            const std::string text = error.what();
            EXPECT_GT(text.size(), 10u) << number;
            EXPECT_EQ(text.find_first_of("\r\n"), text.npos) << number;
        }
    }
}

const char* otherWriters = nullptr;
ImportPatch<decltype(&WriteFile)>* writing = nullptr;

// Another program writes to the log between our opening it and our writing.
BOOL WINAPI WriteSecond(HANDLE file, LPCVOID bytes, DWORD size, DWORD* written, OVERLAPPED* overlapped) {
    const os::Handle other(CreateFileA(otherWriters, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    writing->Original()(other.Get(), "theirs\r\n", 8, written, nullptr);
    return writing->Original()(file, bytes, size, written, overlapped);
}

TEST(OnTheSystem, TwoThatAppendToOneFileOverwriteNothing) {
    const auto file = os::ProgramFolder() / "append.txt";
    const auto name = file.Shown();
    os::RemoveFile(file);
    {
        ImportPatch patch("WriteFile", WriteSecond);
        writing = &patch;
        otherWriters = name.c_str();
        os::AppendToFile(file, "ours\r\n");
        os::AppendToFile(file, "ours\r\n");
    }
    EXPECT_EQ(os::ReadWholeFile(file, 1000), "theirs\r\nours\r\ntheirs\r\nours\r\n");
}

}  // namespace
