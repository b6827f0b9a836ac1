#include "app/shell/modMenu.h"

#include "app/windows/AimClient.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeTray.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

namespace {

struct TrayMenu : FreshWorld {
    ~TrayMenu() override { modSystem::EndRequest.Reset(); }

    ImageList images_;
};

}  // namespace

TEST_F(TrayMenu, HasTheEntriesInTheirOrderAndSubMenusWithTheirIcons) {
    modMenu::LoadMenuIcons(images_);
    const auto host = modMenu::BuildTrayMenu(77, images_);
    std::string drawn;  // a line for each entry, indented in sub-menus, with icon index and key
    os::fake::menus.chooser = [&](const os::MenuRequest& request) {
        for (const auto& entry : request.entries) {
            const auto icon = host->PopupMenuObject().ItemIcon(entry.id);
            const auto key = host->PopupMenuObject().ItemKey(entry.id);
            EXPECT_EQ(entry.icon != 0, icon != cPopupMenu::kNoIcon) << entry.caption;
            drawn += (entry.parent == 0 ? "" : "    ") + entry.caption +
                     (entry.icon == 0 ? "" : " [" + std::to_string(icon) + "]") +
                     (key.empty() ? "" : " " + key) + (entry.isDefault ? " default\n" : "\n");
        }
        return 0;
    };
    host->ShowMenu();
    EXPECT_EQ(drawn,
              "Open Wrenlow open default\n"
              "-\n"
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
    EXPECT_NE(os::fake::tray.shown->icon, 0u);
}

TEST_F(TrayMenu, EachCommandOpensItsDialogOnceIfSomebodyIsSignedOnWhereThatIsNeeded) {
    const struct {
        const char* key;
        const char* caption;
        bool needsSession;
    } cases[] = {
        {"snreplace", "Screenname Replacer", true},
        {"editprofile", "Edit Profile", true},
        {"setaway", "Set Away Message", true},
        {"setback", "Remove Away Message", true},
        {"setidle", "Set Idle Time", true},
        {"noidle", "Unidle", true},
        {"open", "Wrenlow", false},
        {"settings", "Settings", false},
        {"bug", "Reprot A Bug", false},  // in no menu, but a command as ever
    };
    Rig rig;
    rig.ConnectTalking();  // a connection is not enough
    for (const bool signedOn : {false, true}) {
        if (signedOn) rig.SignOn("My Name");
        for (const auto& [key, caption, needsSession] : cases) {
            modMenu::DoMenuCommand(key);
            const bool opens = signedOn || !needsSession;
            EXPECT_EQ(os::fake::ShownDialogCount(caption), opens ? 1 : 0) << key;
            EXPECT_EQ(TakeBoxes().size(), opens ? 0u : 1u) << key;
            if (opens) modMenu::DoMenuCommand(key);  // brings the open one forward
            EXPECT_EQ(os::fake::ShownDialogCount(caption), opens ? 1 : 0) << key;
        }
    }
    EXPECT_TRUE(rig.Reports().empty());
}

TEST_F(TrayMenu, OnlyCloseAsksTheMainFormToUnload) {
    int closed = 0;
    auto close = [&](bool bAsk) { closed += bAsk; };
    modSystem::EndRequest.Bind(close);
    for (const char* key : {"close ", "Close", "", "amPopup", "trans", "hotkey"}) modMenu::DoMenuCommand(key);
    EXPECT_EQ(closed, 0);
    modMenu::DoMenuCommand("close");
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(TakeBoxes(), Texts());
}

TEST_F(TrayMenu, TheAboutBoxNamesVersionAuthorAndHomePage) {
    modMenu::DoMenuCommand("about");
    ASSERT_EQ(os::fake::boxes.shown.size(), 1u);
    EXPECT_EQ(os::fake::boxes.shown.front().title, "About Wrenlow");
    EXPECT_EQ(os::fake::boxes.shown.front().icon, os::BoxIcon::Information);
    EXPECT_EQ(modMenu::AboutText("A. Wren", "https://wrenlow.example/"),
              "Wrenlow 2.0.17\r\nby A. Wren\r\nhttps://wrenlow.example/");
    EXPECT_EQ(modMenu::AboutText("", ""), "Wrenlow 2.0.17\r\nby the Wrenlow authors");
}

TEST_F(TrayMenu, AMissingOrUselessAddressIsToldInsteadOfOpened) {
    for (const char* page : {"https://wrenlow.example/forum", "", "C:\\forum.exe"})
        modMenu::OpenMakerPage(page, "forum");
    EXPECT_EQ(os::fake::shell.opened, Texts{"https://wrenlow.example/forum"});
    EXPECT_EQ(TakeBoxes(), (Texts{"This build of Wrenlow names no forum.",
                                  "The forum cannot be opened:\r\nC:\\forum.exe"}));
}
