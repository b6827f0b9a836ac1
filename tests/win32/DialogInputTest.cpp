// Dialogs by the system's own keyboard and mouse input: what reaches them through the real queue, the focus
// and the dialog manager, as nothing that a test sends by hand does.
#include <windows.h>

#include <gtest/gtest.h>

#include "app/services/SharedForm.h"
#include "desktop/frmSettings.h"
#include "features/frmAway.h"
#include "features/frmSNReplacer.h"
#include "os/win32/DialogImpl.h"
#include "sandbox/hand/DesktopUser.h"
#include "tests/unit/FormRig.h"
#include "tests/win32/Messages.h"

namespace {

// Letters in lower case, digits and blanks.
void TypeKeys(const std::string& text) {
    for (const char c : text) PressKey(static_cast<BYTE>(UpperAscii(c)));
}

struct DialogInput : FormRig {
    static HWND WindowOf(const User& user, os::ControlId control) {
        return os::DialogAccess::Of(user.Window()).Window(control, [](os::ControlKind) { return true; });
    }
    static bool Focused(const User& user, os::ControlId control) {
        return HandleMessagesUntil([&] { return user.HasFocus(control); });
    }
    static bool Reads(const User& user, os::ControlId control, const std::string& text) {
        return HandleMessagesUntil([&] { return user.Window().Text(control) == text; });
    }
    static void Click(const User& user, os::ControlId control, LONG x = -1, LONG y = -1) {
        RECT place;
        GetWindowRect(WindowOf(user, control), &place);
        ClickAt(x < 0 ? (place.left + place.right) / 2 : place.left + x,
                y < 0 ? (place.top + place.bottom) / 2 : place.top + y);
    }
};

}  // namespace

TEST_F(DialogInput, TabGoesThroughTheControlsInTheirOrderAndAround) {
    rig.SignOn("My Name");
    SharedForm<frmAway>().Start();
    User away("Set Away Message");
    ASSERT_TRUE(Focused(away, "cmbScreenname"));
    for (const char* next : {"cmbAway", "txtAway", "cmdSave", "cmdCancel", "cmbScreenname"}) {
        PressKey(VK_TAB);
        ASSERT_TRUE(Focused(away, next)) << next;
    }
    PressKeys({VK_SHIFT, VK_TAB});
    ASSERT_TRUE(Focused(away, "cmdCancel"));
}

TEST_F(DialogInput, AnAwayMessageByKeyboardAlone) {
    auto first = rig.SignOn("My Name");
    auto second = rig.SignOn("Another");
    SharedForm<frmAway>().Start();
    User away("Set Away Message");
    ASSERT_TRUE(Focused(away, "cmbScreenname"));
    PressKey(VK_DOWN);
    PressKey(VK_DOWN);
    ASSERT_TRUE(Reads(away, "cmbScreenname", "Another (Another)"));
    PressKey(VK_TAB);
    PressKey(VK_TAB);
    ASSERT_TRUE(Focused(away, "txtAway"));
    TypeKeys("gone");
    PressKey(VK_RETURN);  // a line of the text, not the default button
    TypeKeys("home");
    ASSERT_TRUE(Reads(away, "txtAway", "gone\r\nhome"));
    PressKey(VK_TAB);
    PressKey(VK_RETURN);
    ASSERT_TRUE(HandleMessagesUntil([] { return !IsShown("Set Away Message"); }));
    EXPECT_EQ(first.server.TakeReceived(), "");
    EXPECT_EQ(second.server.TakeReceived(), Away(2, "gone\r\nhome"));
}

TEST_F(DialogInput, TheReplacerByMouseAndEnter) {
    os::fake::PutFile("/program/repl.dat", "asdf1234\r\nFred\r\n");
    rig.SignOn("My Name");
    SharedForm<frmSNReplacer>().Start();
    User replacer("Screenname Replacer");
    ASSERT_TRUE(Focused(replacer, "txtScreenname"));
    Click(replacer, "txtReplace");
    ASSERT_TRUE(Focused(replacer, "txtReplace"));
    TypeKeys("wilma");
    Click(replacer, "txtScreenname");
    ASSERT_TRUE(Focused(replacer, "txtScreenname"));
    TypeKeys("qwerty");
    PressKey(VK_RETURN);
    ASSERT_TRUE(Focused(replacer, "txtReplace"));
    PressKey(VK_RETURN);
    ASSERT_TRUE(HandleMessagesUntil([&] { return replacer.Window().RowCount("lvNames") == 2; }));

    HWND list = WindowOf(replacer, "lvNames");
    RECT row{LVIR_BOUNDS, 0, 0, 0};
    SendMessageA(list, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
    // In the second column: the whole row is to be selected.
    Click(replacer, "lvNames", row.right - 20, (row.top + row.bottom) / 2);
    ASSERT_TRUE(HandleMessagesUntil([&] { return replacer.Window().IsRowSelected("lvNames", 0); }));
    Click(replacer, "cmdRemove");
    ASSERT_TRUE(HandleMessagesUntil([&] { return replacer.Window().RowCount("lvNames") == 1; }));
    Click(replacer, "cmdSave");
    ASSERT_TRUE(HandleMessagesUntil([] { return !IsShown("Screenname Replacer"); }));
    EXPECT_EQ(os::fake::FileText("/program/repl.dat"), "qwerty\r\nwilma\r\n");
}

TEST_F(DialogInput, ControlTabTurnsThePagesOfTheSettings) {
    SharedForm<frmSettings>().Start(false);
    User settings("Settings");
    PressKeys({VK_CONTROL, VK_TAB});
    EXPECT_TRUE(HandleMessagesUntil([&] { return settings.Window().Value("SSTab1") == 1; }));
    EXPECT_TRUE(settings.Sees("Text1"));
    PressKey(VK_ESCAPE);
    EXPECT_TRUE(HandleMessagesUntil([] { return !IsShown("Settings"); }));
}
