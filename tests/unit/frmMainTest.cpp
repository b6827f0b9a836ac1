// The program as a whole, on the fakes: its menu and its end.
#include "app/shell/frmMain.h"

#include <optional>

#include "os/fake/FakeMainWindow.h"
#include "os/fake/FakePopupMenu.h"
#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeTray.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

namespace {

constexpr std::uint32_t kLeftDown = 0x201, kRightDown = 0x204;
const auto kHello = Frame(1, 1, "00 00 00 01"_hex);

struct MainForm : FreshWorld {
    MainForm() {
        os::fake::SetCommandLineArguments("d");
        form_.emplace();
    }

    static os::fake::Peer& ConnectClient() {
        auto& client = Rig::ConnectSilently();
        client.Feed(Rig::kRequest);
        return client;
    }

    std::optional<frmMain> form_;
};

TEST_F(MainForm, OnlyTheRightButtonOpensTheMenuAndCloseInItEndsTheProgram) {
    int menus = 0;
    os::fake::SetMenuChooser([&](const os::MenuRequest& request) {
        ++menus;
        return request.entries.back().id;
    });
    form_->Form_Load();
    auto& client = ConnectClient();
    os::fake::SendTrayCallback(kLeftDown);
    EXPECT_EQ(menus, 0);
    os::fake::SendTrayCallback(kRightDown);
    EXPECT_EQ(menus, 1);
    EXPECT_TRUE(form_->IsUnloaded());
    EXPECT_TRUE(client.SawClose());
    EXPECT_FALSE(os::fake::ShownTrayIcon());
    EXPECT_THROW(ConnectClient(), std::logic_error);
}

TEST_F(MainForm, TheEndOfTheSessionCountsWhenItIsCertainAndOnce) {
    form_->Form_Load();
    os::fake::TheMainWindow()->QueryEndSession();
    os::fake::TheMainWindow()->EndSession(false);
    EXPECT_FALSE(form_->IsUnloaded());
    os::fake::TheMainWindow()->EndSession(true);
    EXPECT_TRUE(form_->IsUnloaded());
    const auto changes = os::fake::RegistryChanges();
    os::fake::TheMainWindow()->CloseRequested();
    EXPECT_EQ(os::fake::RegistryChanges(), changes);
}

TEST_F(MainForm, APeerThatTakesNothingHoldsTheEndUpForTwoSecondsAtMost) {
    form_->Form_Load();
    auto& client = ConnectClient();
    Accept(os::fake::Outgoing(0));
    client.Feed(kHello);
    client.LimitReceived(0);
    os::fake::Outgoing(0).Feed(kHello);
    const auto begin = os::MonotonicMilliseconds();
    os::fake::TheMainWindow()->EndSession(true);
    EXPECT_EQ(os::MonotonicMilliseconds() - begin, 2000);
}

}  // namespace
