// The program as a whole, on the fakes: its menu and its end.
#include "app/shell/frmMain.h"

#include <functional>
#include <optional>
#include <stdexcept>

#include "app/services/modRegistry.h"
#include "app/shell/StartUp.h"
#include "app/windows/modError.h"
#include "desktop/modHotKeys.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeTopWindows.h"
#include "os/fake/FakeTray.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

namespace {

constexpr std::uint32_t kLeftDown = 0x201, kLeftDouble = 0x203, kRightDown = 0x204, kRightDouble = 0x206;
const auto kHello = Frame(1, 1, "00 00 00 01"_hex);

struct MainForm : FreshWorld {
    MainForm() {
        os::fake::commandLineArguments = "d";
        form_.emplace();
    }

    static void RunAim() { os::fake::processes.running = {{8, "C:\\AIM95\\aim.exe"}}; }
    // -1 while nobody has written it.
    static int ProxyEnabled() {
        const auto value = os::ReadRegistryValue(
            os::RegistryHive::CurrentUser,
            "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy", "Enabled", 4);
        return value ? value->data[0] : -1;
    }
    // Of the error window on top.
    static std::string ErrorText() { return os::fake::DialogUser("Wrenlow").Window().Text("lblError"); }

    std::optional<frmMain> form_;
};

TEST_F(MainForm, OnlyTheRightButtonOpensTheMenuAndCloseInItEndsTheProgram) {
    int menus = 0;
    os::fake::menus.chooser = [&](const os::MenuRequest& request) {
        ++menus;
        return request.entries.back().id;
    };
    form_->Form_Load();
    auto& client = Rig::Connect();
    for (const auto message : {kLeftDown, kRightDouble}) os::fake::SendTrayCallback(message);
    EXPECT_EQ(menus + os::fake::ShownDialogCount("Wrenlow"), 0);
    os::fake::SendTrayCallback(kLeftDouble);
    EXPECT_EQ(os::fake::ShownDialogCount("Wrenlow"), 1);
    os::fake::SendTrayCallback(kRightDown);
    EXPECT_EQ(menus, 1);
    EXPECT_TRUE(form_->IsUnloaded());
    EXPECT_TRUE(client.SawClose());
    EXPECT_FALSE(os::fake::tray.shown);
    EXPECT_THROW(Rig::Connect(), std::logic_error);
}

TEST_F(MainForm, TheEndOfTheSessionCountsWhenItIsCertainAndOnce) {
    form_->Form_Load();
    os::fake::mainWindow->EndSession(false);
    EXPECT_FALSE(form_->IsUnloaded());
    os::fake::mainWindow->EndSession(true);
    EXPECT_TRUE(form_->IsUnloaded());
    const auto changes = os::fake::registry.changes;
    os::fake::mainWindow->CloseRequested();
    EXPECT_EQ(os::fake::registry.changes, changes);
}

// What the settings ask for touches other programs' windows, and any of them may hang.
TEST_F(MainForm, StartingListensThenPutsTheSettingsInForceAndAsksAtTheEnd) {
    RunAim();
    bool isServed = false;
    os::fake::topWindows.duringEnumeration = [&] {
        Rig::Connect();
        isServed = true;
    };
    os::fake::boxes.during = [&] {
        EXPECT_TRUE(isServed);
        EXPECT_TRUE(os::fake::tray.shown);
        EXPECT_EQ(modRegistry::ReadSetting("setupaim"), "1") << "the defaults are written";
        throw std::runtime_error("on purpose");
    };
    form_->Form_Load();
    EXPECT_TRUE(ErrorText().ends_with("on purpose\r\nat: modSystem:StartWrenlow: 0")) << ErrorText();
    Rig::Connect();
    EXPECT_FALSE(form_->IsUnloaded());
}

TEST_F(MainForm, APortThatIsHeldIsTriedForAMinuteAndThenExplained) {
    modRegistry::WriteSetting("setupaim", "0");
    for (const bool isFreed : {true, false}) {
        form_.reset();
        form_.emplace();
        std::optional<net::TcpListener> holder(std::in_place);
        holder->Listen(modSocket::kListeningPort);
        form_->Form_Load();
        os::fake::AdvanceClock(59'000);
        EXPECT_EQ(modError::OpenWindowCount(), 0u);
        if (isFreed) holder.reset();
        os::fake::AdvanceClock(2'000);
        EXPECT_EQ(modError::OpenWindowCount(), isFreed ? 0u : 1u);
        if (isFreed) Rig::Connect();
    }
    EXPECT_TRUE(ErrorText().starts_with("10048: Port 11080 is in use by another program,")) << ErrorText();
    EXPECT_TRUE(ErrorText().ends_with("\r\nat: modSocket:WinsockStartListen: 0")) << ErrorText();
    const auto kept = modSystem::WhyPortIsRefused(10013, 11080);
    EXPECT_TRUE(kept.starts_with("Port 11080 is kept by Windows itself")) << kept;
}

TEST_F(MainForm, TheTipSaysWhatIsWrongOrWhoIsSignedOnAsFarAsThereIsRoom) {
    form_->Form_Load();
    const std::string longName(60, 'x');
    const std::pair<const char*, std::string> signOns[] = {
        {"Walter", "Wrenlow - Walter"},
        {"Ada", "Wrenlow - Walter, Ada"},
        {"w alter", "Wrenlow - Walter, Ada"},
        {longName.c_str(), "Wrenlow - Walter, Ada, " + std::string(40, 'x')},
    };
    std::vector<os::fake::Peer*> clients;
    for (const auto& [name, tip] : signOns) {
        clients.push_back(&Rig::Connect());
        auto& server = Rig::LastServer();
        Accept(server);
        clients.back()->Feed(kHello);
        server.Feed(kHello + Frame(2, 2, Snac(1, 0xF, Named(name))));
        os::fake::AdvanceClock(200);
        EXPECT_EQ(os::fake::ShownTip(), tip);
    }
    for (auto* client : clients) client->Close();
    os::fake::AdvanceClock(200);
    EXPECT_EQ(os::fake::ShownTip(), "Wrenlow");
    Rig::Connect();
    Rig::LastServer().RefuseConnect();
    os::fake::AdvanceClock(200);
    EXPECT_EQ(os::fake::ShownTip(), "Wrenlow - server unreachable");
}

TEST_F(MainForm, AHotkeyThatIsHeldOrWaitsInItsBoxActsOnce) {
    form_->Form_Load();
    const auto press = [] { modHotKeys::RunHotKeyAction("Set Away", "lunch"); };
    os::fake::boxes.during = [&] {
        os::fake::AdvanceClock(2'000);
        press();
    };
    for (int repeat = 0; repeat < 40; ++repeat) {
        press();
        os::fake::AdvanceClock(30);
    }
    EXPECT_EQ(TakeBoxes().size(), 1u);
    modHotKeys::RunHotKeyAction("Clear Away", "");
    EXPECT_EQ(TakeBoxes().size(), 1u) << "another action";
    os::fake::AdvanceClock(1'000);
    press();
    EXPECT_EQ(TakeBoxes().size(), 1u) << "another press";
}

// Wherever Wrenlow waits for the user, or for the client to be gone.
TEST_F(MainForm, TheEndOfEverythingLeavesTheClientAsItIsWhereverItsRestartStands) {
    const std::function<void()> ends[] = {
        [] { os::fake::mainWindow->EndSession(true); },
        [] { modHotKeys::RunHotKeyAction("Panic!", ""); },
    };
    const struct {
        const char* name;
        bool isClosing;   // or starting
        std::size_t box;  // of the restart; after the last one, in the wait
        bool isEnded;     // the client, by the session's end
    } cases[] = {
        {"set-up", false, 1, false},
        {"closing AIM, at the start", false, 2, false},
        {"opening AIM, at the start", false, 3, true},
        {"waiting, at the start", false, 4, true},
        {"closing AIM, at the end", true, 1, false},
        {"opening AIM, at the end", true, 2, true},
        {"waiting, at the end", true, 3, true},
    };
    for (const auto& row : cases) {
        for (const auto& end : ends) {
            form_.reset();
            os::fake::ResetWorld();
            form_.emplace();
            modRegistry::WriteSetting("setupaim", row.isClosing ? "0" : "1");
            modRegistry::WriteSetting("revertsettings", "1");
            RunAim();
            net::Timer inTheWait;
            auto endNow = [&] { end(); };
            inTheWait.Tick.Bind(endNow);
            const std::size_t lastBox = row.isClosing ? 2 : 3;
            os::fake::boxes.during = [&] {
                const auto box = os::fake::boxes.shown.size();
                if (box == row.box) end();
                if (box == lastBox && row.box > lastBox) inTheWait.StartOnce(500);
            };
            form_->Form_Load();
            if (row.isClosing) os::fake::mainWindow->CloseRequested();
            EXPECT_TRUE(form_->IsUnloaded()) << row.name;
            EXPECT_EQ(os::fake::boxes.shown.size(), std::min(row.box, lastBox)) << row.name;
            EXPECT_EQ(os::fake::processes.started, Texts()) << row.name;
            EXPECT_EQ(os::fake::processes.running.empty(), row.isEnded || &end != &ends[0]) << row.name;
            EXPECT_EQ(ProxyEnabled(), 0) << row.name;
            EXPECT_FALSE(os::fake::tray.shown) << row.name;
        }
    }
}

TEST_F(MainForm, TheEndWritesTheClientsSettingsBeforeItClosesConnections) {
    modRegistry::WriteSetting("revertsettings", "1");
    for (const bool isSession : {true, false}) {
        form_.reset();
        form_.emplace();
        form_->Form_Load();
        Rig::Connect();
        EXPECT_EQ(ProxyEnabled(), 1);
        int enabledAtTheClose = -1;
        auto note = [&](std::size_t, std::int32_t) { enabledAtTheClose = ProxyEnabled(); };
        Relay::Current()->Closed.Bind(note);
        isSession ? os::fake::mainWindow->EndSession(true) : os::fake::mainWindow->CloseRequested();
        Relay::Current()->Closed.Reset();
        EXPECT_EQ(enabledAtTheClose, 0);
    }
}

TEST_F(MainForm, APeerThatTakesNothingHoldsTheEndUpForLessThanTwoSeconds) {
    form_->Form_Load();
    auto& client = Rig::Connect();
    Accept(os::fake::Outgoing(0));
    client.Feed(kHello);
    client.LimitReceived(0);
    os::fake::Outgoing(0).Feed(kHello);
    const auto begin = os::MonotonicMilliseconds();
    os::fake::mainWindow->EndSession(true);
    EXPECT_EQ(os::MonotonicMilliseconds() - begin, 1500);
}

}  // namespace
