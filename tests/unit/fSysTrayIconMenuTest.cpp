#include "app/shell/fSysTrayIconMenu.h"

#include <memory>

#include "os/fake/FakeClock.h"
#include "os/fake/FakeTray.h"
#include "tests/unit/FreshWorld.h"

namespace {

struct TrayHost : FreshWorld {
    TrayHost() {
        host_->SysTrayMouseDown.Bind<&TrayHost::host_SysTrayMouseDown>(*this);
        host_->SysTrayMouseUp.Bind<&TrayHost::host_SysTrayMouseUp>(*this);
        host_->SysTrayMouseMove.Bind<&TrayHost::host_SysTrayMouseMove>(*this);
        host_->SysTrayDoubleClick.Bind<&TrayHost::host_SysTrayDoubleClick>(*this);
        host_->MenuClick.Bind<&TrayHost::host_MenuClick>(*this);
    }

    void host_SysTrayMouseDown(std::int32_t button) { heard_ += "down" + std::to_string(button); }
    void host_SysTrayMouseUp(std::int32_t button) { heard_ += "up" + std::to_string(button); }
    void host_SysTrayMouseMove() { heard_ += "move"; }
    void host_SysTrayDoubleClick(std::int32_t button) { heard_ += "double" + std::to_string(button); }
    void host_MenuClick(std::int32_t index, const std::string& key) {
        heard_ += "click" + std::to_string(index) + key;
    }

    // Shows the menu and lets that be chosen in it.
    void Choose(std::function<std::int32_t(const os::MenuRequest&)> chooser) {
        os::fake::menus.chooser = std::move(chooser);
        host_->ShowMenu();
    }

    std::unique_ptr<fSysTrayIconMenu> host_ = std::make_unique<fSysTrayIconMenu>();
    std::string heard_;
};

}  // namespace

TEST_F(TrayHost, TheRecordIsTheFirstFormWithTheWindowsOwnIcon) {
    host_->Initialise(77);
    const auto record = os::fake::tray.shown;
    ASSERT_TRUE(record);
    EXPECT_EQ(record->flags, 0x17u);
    EXPECT_EQ(record->callbackMessage, 0x200u);
    EXPECT_EQ(record->id, 1u) << "the same at every start";
    EXPECT_EQ(os::fake::ShownTip(), "Wrenlow, the program under test");
    EXPECT_EQ(record->icon, 16u);
    os::fake::menus.iconSize = 32;
    os::fake::RestartTaskbar();  // also told when the screen gets another scale
    EXPECT_EQ(os::fake::tray.shown->icon, 32u);
    host_->IconHandle(0x55);
    EXPECT_EQ(os::fake::tray.shown->icon, 0x55u);
}

TEST_F(TrayHost, ALongTipIsCutBeforeItsTerminatingZero) {
    host_->Initialise(77);
    host_->ToolTip(std::string(200, 'x'));
    EXPECT_EQ(os::fake::ShownTip(), std::string(63, 'x'));
    host_->ToolTip("");
    EXPECT_EQ(os::fake::tray.shown->tip, (std::array<char, 64>{}));
}

TEST_F(TrayHost, EveryRawMouseMessageIsTheNotificationOfTheTable) {
    host_->Initialise(77);
    const std::pair<std::uint32_t, const char*> cases[] = {
        {0x1FF, ""},        {0x200, "move"},  {0x201, "down1"}, {0x202, "up1"},
        {0x203, "double1"}, {0x204, "down2"}, {0x205, "up2"},   {0x206, "double2"},
        {0x207, ""},        {0x208, ""},      {0x20A, ""},      {0, ""}};
    for (const auto& [message, heard] : cases) {
        os::fake::SendTrayCallback(message);
        EXPECT_EQ(std::exchange(heard_, ""), heard) << std::hex << message;
    }
}

TEST_F(TrayHost, WithoutATaskbarTheIconIsTriedForAWhileAndGivenToANewOneForEver) {
    const auto wait = [](int retries) { os::fake::AdvanceClock(retries * fSysTrayIconMenu::kRetryMs); };
    os::fake::tray.hasTaskbar = false;
    host_->Initialise(77);
    host_->ToolTip("set meanwhile");
    wait(3);
    os::fake::tray.hasTaskbar = true;
    wait(1);
    EXPECT_EQ(os::fake::ShownTip(), "set meanwhile");
    const auto adds = os::fake::tray.adds;
    wait(10);
    EXPECT_EQ(os::fake::tray.adds, adds) << "there already";

    host_->Form_QueryUnload();
    os::fake::tray.hasTaskbar = false;
    host_->Initialise(77);
    wait(fSysTrayIconMenu::kRetries + 10);
    EXPECT_EQ(os::fake::tray.adds, adds + 1 + fSysTrayIconMenu::kRetries);
    os::fake::RestartTaskbar();
    EXPECT_TRUE(os::fake::tray.shown);
}

TEST_F(TrayHost, ARemovedEntryAndADestroyedHostRaiseNothing) {
    host_->Initialise(77);
    host_->AddMenuItem("Open", "open");
    Choose([&](const os::MenuRequest&) { return host_->RemoveMenuItem(1), 1; });
    host_->AddMenuItem("Open", "open");
    Choose([&](const os::MenuRequest& request) { return host_.reset(), request.entries.front().id; });
    EXPECT_EQ(heard_, "");
    EXPECT_FALSE(os::fake::tray.shown);
}
