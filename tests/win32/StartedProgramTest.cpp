// wrenlow.exe itself, started like any program: its windows, its sockets and its end. The port is fixed, so
// nobody else on the machine may have it meanwhile.
#include "tests/win32/StartedProgram.h"

#include <gtest/gtest.h>

#include "tests/contract/RawListener.h"
#include "tests/unit/Hex.h"
#include "tests/win32/DesktopUser.h"

namespace {

constexpr UINT kTrayCallback = 0x200;
constexpr DWORD kEndPatienceMs = 10'000;

const ByteString kClientHello = "2A 01 00 01 00 04 00 00 00 01"_hex;
const ByteString kServerHello = "2A 01 00 64 00 04 00 00 00 01"_hex;

// A client and a server with the program between them, signed on.
struct Pair {
    explicit Pair(RawListener& listener) : client(kProgramPort) {
        const auto port = static_cast<std::int32_t>(listener.Port());
        client.Send("04 01"_hex + WordToStr(port) + "7F 00 00 01 00"_hex);
        server = listener.Accept();
        EXPECT_EQ(client.Receive(8).substr(0, 2), "00 5A"_hex);
        client.Send(kClientHello);
        EXPECT_EQ(server->Receive(kClientHello.size()), kClientHello);
        server->Send(kServerHello);
        EXPECT_EQ(client.Receive(kServerHello.size()), kServerHello);
    }

    // One frame each way.
    void Exchange() {
        const auto up = "2A 02 00 02 00 01 'u'"_hex;
        const auto down = "2A 02 00 65 00 01 'd'"_hex;
        client.Send(up);
        EXPECT_EQ(server->Receive(up.size()), up);
        server->Send(down);
        EXPECT_EQ(client.Receive(down.size()), down);
    }

    bool IsClosed() { return client.Receive(1).empty() && server->Receive(1).empty(); }

    RawPeer client;
    std::unique_ptr<RawPeer> server;
};

// The last entry but one of the tray menu.
HWND OpenAboutBox() {
    SetCursorPos(100, 100);
    PostMessageA(TrayWindowHandle(), kTrayCallback, 0, WM_RBUTTONDOWN);
    if (!MenusOpen(1)) return nullptr;
    for (const BYTE key : {BYTE{VK_UP}, BYTE{VK_UP}, BYTE{VK_RETURN}}) PressKey(key);
    return StartedProgram::Window("About Wrenlow");
}

// As Windows does at the end of a session.
void EndSession() {
    DWORD_PTR answer = FALSE;
    const HWND window = StartedProgram::MainWindow();
    SendMessageTimeoutA(window, WM_QUERYENDSESSION, 0, 0, SMTO_NORMAL, kEndPatienceMs, &answer);
    EXPECT_EQ(answer, DWORD_PTR{TRUE});
    SendMessageTimeoutA(window, WM_ENDSESSION, TRUE, 0, SMTO_NORMAL, kEndPatienceMs, &answer);
}

}  // namespace

TEST(StartedProgram, APortThatIsTakenOpensTheErrorWindowAndTheTrayStays) {
    RawListener other(kProgramPort);
    const StartedProgram program;
    const HWND error = StartedProgram::Window("Wrenlow");
    ASSERT_NE(error, nullptr);
    const auto texts = StartedProgram::TextsIn(error);
    EXPECT_NE(texts.find("Wrenlow generated the folloing error\n10048: "), std::string::npos) << texts;
    EXPECT_NE(texts.find("\r\nat: modSocket:WinsockStartListen: 0\n"), std::string::npos) << texts;

    ASSERT_TRUE(StartedProgram::ShowsItsIcon());
    const HWND about = OpenAboutBox();
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(IsWindow(error)) << "the error window went away by itself";
    StartedProgram::Press(about, IDOK);
    StartedProgram::Press(error, IDOK);
    EXPECT_TRUE(Eventually([=] { return !IsWindow(about) && !IsWindow(error); }));
    EXPECT_TRUE(program.IsRunning());
}

TEST(StartedProgram, ConnectionsComeTalkAndGoWhileABoxIsOpen) {
    RawListener server;
    const StartedProgram program;
    ASSERT_TRUE(StartedProgram::Listens());
    Pair early(server);
    const HWND about = OpenAboutBox();
    ASSERT_NE(about, nullptr);
    for (int i = 0; i < 20; ++i) {
        Pair passing(server);
        passing.Exchange();
        passing.client.EndDirection();
        EXPECT_EQ(passing.server->Receive(1), "");
        EXPECT_EQ(passing.client.Receive(1), "");
    }
    Pair late(server);
    EXPECT_TRUE(IsWindow(about));
    StartedProgram::Press(about, IDOK);
    EXPECT_TRUE(Eventually([=] { return !IsWindow(about); }));
    early.Exchange();
    late.Exchange();
}

TEST(StartedProgram, TheEndOfTheSessionClosesConnectionsAndEndsIt) {
    RawListener server;
    const StartedProgram program;
    ASSERT_TRUE(StartedProgram::Listens());
    Pair first(server);
    Pair second(server);
    EndSession();
    EXPECT_TRUE(first.IsClosed());
    EXPECT_TRUE(second.IsClosed());
    EXPECT_EQ(program.ExitCode(), 0);
    EXPECT_EQ(TrayWindowHandle(), nullptr);
}

TEST(StartedProgram, TheEndOfTheSessionDoesNotWaitForAnOpenBox) {
    const StartedProgram program;
    ASSERT_TRUE(StartedProgram::Listens());
    ASSERT_NE(OpenAboutBox(), nullptr);
    EndSession();
    EXPECT_EQ(program.ExitCode(), 0);
}
