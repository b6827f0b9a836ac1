#include "app/shell/modMenu.h"

#include <gtest/gtest.h>

#include "app/services/SharedForm.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeMessageBox.h"
#include "os/fake/FakePopupMenu.h"
#include "os/fake/FakeShell.h"
#include "os/fake/FakeTray.h"
#include "os/fake/FakeWorld.h"
#include "tests/unit/Rig.h"

namespace {

class TrayMenu : public testing::Test {
 protected:
    TrayMenu() { Reset(); }
    ~TrayMenu() override { Reset(); }

    static void Reset() {
        os::fake::ResetWorld();
        os::fake::ResetTray();
        os::fake::ResetPopupMenu();
        os::fake::ResetMessageBoxes();
        os::fake::ResetShell();
        modMenu::CloseChosen().Reset();
        UnloadForms();
    }

    // The menu as a drawing: one line for each entry, indented in sub-menus, with icon index and key.
    static std::string Drawn(const cPopupMenu& menu, std::int32_t parent = 0,
                             const std::string& indent = {}) {
        std::string drawing;
        for (const auto index : menu.Entries(parent)) {
            drawing += indent + menu.Caption(index);
            if (menu.ItemIcon(index) != cPopupMenu::kNoIcon)
                drawing += " [" + std::to_string(menu.ItemIcon(index)) + "]";
            drawing += menu.ItemKey(index).empty() ? "\n" : " " + menu.ItemKey(index) + "\n";
            drawing += Drawn(menu, index, indent + "    ");
        }
        return drawing;
    }

    ImageList images_;
};

}  // namespace

TEST_F(TrayMenu, HasTheEntriesInTheirOrderAndSubMenus) {
    modMenu::LoadMenuIcons(images_);
    const auto host = modMenu::BuildTrayMenu(77, 0x55, images_);
    EXPECT_EQ(Drawn(host->PopupMenuObject()),
              "Screenname Replacer... [8] snreplace\n"
              "-\n"
              "Edit Profile... [9] editprofile\n"
              "Away Message [1] amPopup\n"
              "    Set Away... [1] setaway\n"
              "    Back setback\n"
              "Idle Control [2] idlePopup\n"
              "    Set Idle... [2] setidle\n"
              "    Remove Idle noidle\n"
              "-\n"
              "Settings... settings\n"
              "Links... newsPopup\n"
              "    Wrenlow Homepage news\n"
              "    Wrenlow Forum forum\n"
              "About Wrenlow... [0] about\n"
              "Close [3] close\n");
    EXPECT_EQ(os::fake::ShownTip(), "Wrenlow");
    EXPECT_EQ(os::fake::ShownTrayIcon()->icon, 0x55u);
    // Every icon that the menu asks for is there.
    os::fake::SetMenuChooser([&](const os::MenuRequest& request) {
        for (const auto& entry : request.entries) {
            const bool asks = host->PopupMenuObject().ItemIcon(entry.id) != cPopupMenu::kNoIcon;
            EXPECT_EQ(entry.icon != 0, asks) << entry.caption;
        }
        return 0;
    });
    host->ShowMenu();
}

TEST_F(TrayMenu, AFormWithoutAnIconLeavesTheHostItsOwn) {
    const auto host = modMenu::BuildTrayMenu(77, 0, images_);
    EXPECT_NE(os::fake::ShownTrayIcon()->icon, 0u);
}

TEST_F(TrayMenu, EachDialogCommandOpensItsDialogOnce) {
    Rig rig;
    rig.SignOn("My Name");
    const struct {
        const char* key;
        const char* caption;
    } cases[] = {
        {"snreplace", "Screenname Replacer"},
        {"editprofile", "Edit Profile"},
        {"setaway", "Set Away Message"},
        {"setback", "Remove Away Message"},
        {"setidle", "Set Idle Time"},
        {"noidle", "Unidle"},
        {"settings", "Settings"},
        {"bug", "Reprot A Bug"},
    };
    for (const auto& test : cases) {
        modMenu::DoMenuCommand(test.key);
        EXPECT_EQ(os::fake::ShownDialogCount(test.caption), 1) << test.key;
        modMenu::DoMenuCommand(test.key);  // brings the open one forward
        EXPECT_EQ(os::fake::ShownDialogCount(test.caption), 1) << test.key;
    }
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
    EXPECT_TRUE(rig.Reports().empty());
}

TEST_F(TrayMenu, ACommandForASessionIsRefusedWhileNobodyIsSignedOn) {
    Rig rig;
    for (const char* key : {"editprofile", "setaway", "setback", "setidle", "noidle"}) {
        os::fake::ResetMessageBoxes();
        modMenu::DoMenuCommand(key);
        ASSERT_EQ(os::fake::ShownBoxes().size(), 1u) << key;
        EXPECT_EQ(os::fake::ShownBoxes().front().icon, os::BoxIcon::Error) << key;
    }
    EXPECT_TRUE(rig.Reports().empty());
}

TEST_F(TrayMenu, CloseAsksTheMainFormToUnload) {
    int closed = 0;
    auto close = [&] { ++closed; };
    modMenu::CloseChosen().Bind(close);
    for (const char* key : {"close ", "Close", "", "amPopup", "trans", "hotkey"}) modMenu::DoMenuCommand(key);
    EXPECT_EQ(closed, 0);
    modMenu::DoMenuCommand("close");
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
}

TEST_F(TrayMenu, TheAboutBoxNamesVersionAuthorAndHomePage) {
    modMenu::DoMenuCommand("about");
    ASSERT_EQ(os::fake::ShownBoxes().size(), 1u);
    const auto& box = os::fake::ShownBoxes().front();
    EXPECT_EQ(box.title, "About Wrenlow");
    EXPECT_EQ(box.icon, os::BoxIcon::Information);
    EXPECT_EQ(box.buttons, os::BoxButtons::Ok);
    EXPECT_EQ(modMenu::AboutText("A. Wren", "https://wrenlow.example/"),
              "Wrenlow 2.0.17\r\nby A. Wren\r\nhttps://wrenlow.example/");
    EXPECT_NE(modMenu::AboutText("", "").find("names no home page"), std::string::npos);
}

TEST_F(TrayMenu, AMissingOrUselessAddressIsToldInsteadOfOpened) {
    modMenu::OpenMakerPage("https://wrenlow.example/forum", "forum");
    EXPECT_EQ(os::fake::OpenedPages(), std::vector<std::string>{"https://wrenlow.example/forum"});
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
    modMenu::OpenMakerPage("", "forum");
    modMenu::OpenMakerPage("C:\\forum.exe", "forum");
    EXPECT_EQ(os::fake::OpenedPages().size(), 1u);
    ASSERT_EQ(os::fake::ShownBoxes().size(), 2u);
    EXPECT_EQ(os::fake::ShownBoxes()[0].text, "This build of Wrenlow names no forum.");
    EXPECT_EQ(os::fake::ShownBoxes()[1].text, "The forum cannot be opened:\r\nC:\\forum.exe");
}
