// Dialogs by the system's own keyboard and mouse input: what reaches them through the real queue, the focus
// and the dialog manager, as nothing that a test sends by hand does.
#include <windows.h>

#include <gtest/gtest.h>

#include "app/services/SharedForm.h"
#include "desktop/frmSettings.h"
#include "features/frmAway.h"
#include "features/frmIdle.h"
#include "features/frmSNReplacer.h"
#include "os/win32/DialogImpl.h"
#include "os/win32/DialogMessages.h"
#include "tests/unit/FormRig.h"

namespace {

constexpr DWORD kMilliseconds = 10'000;  // bound of every wait

// Runs the messages until the condition holds.
template <typename Condition>
testing::AssertionResult Until(Condition condition) {
    const DWORD begin = GetTickCount();
    while (!condition()) {
        const DWORD passed = GetTickCount() - begin;
        if (passed >= kMilliseconds) return testing::AssertionFailure() << "waited in vain";
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (os::TakeDialogMessage(message)) continue;
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    return testing::AssertionSuccess();
}

void Key(BYTE key) {
    keybd_event(key, 0, 0, 0);
    keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
}

void KeyWith(BYTE modifier, BYTE key) {
    keybd_event(modifier, 0, 0, 0);
    Key(key);
    keybd_event(modifier, 0, KEYEVENTF_KEYUP, 0);
}

// Letters in lower case, digits and blanks.
void TypeKeys(const std::string& text) {
    for (const char c : text) Key(static_cast<BYTE>(UpperAscii(c)));
}

struct DialogInput : FormRig {
    static HWND WindowOf(const User& user, os::ControlId control) {
        return os::DialogAccess::Of(user.Window()).Window(control, [](os::ControlKind) { return true; });
    }
    static testing::AssertionResult Focused(const User& user, os::ControlId control) {
        return Until([&] { return user.HasFocus(control); });
    }
    static testing::AssertionResult Reads(const User& user, os::ControlId control, const std::string& text) {
        return Until([&] { return user.Window().Text(control) == text; });
    }
    static void Click(const User& user, os::ControlId control, int x = -1, int y = -1) {
        RECT place;
        GetWindowRect(WindowOf(user, control), &place);
        const LONG left = x < 0 ? (place.left + place.right) / 2 : place.left + x;
        const LONG top = y < 0 ? (place.top + place.bottom) / 2 : place.top + y;
        // Movement and press in one piece: between two calls the display's own pointer can move back.
        const auto part = [](LONG pixel, int metric) {
            const int size = GetSystemMetrics(metric);
            return static_cast<DWORD>((pixel * 65536 + size - 1) / size);
        };
        mouse_event(MOUSEEVENTF_ABSOLUTE | MOUSEEVENTF_MOVE | MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP,
                    part(left, SM_CXSCREEN), part(top, SM_CYSCREEN), 0, 0);
    }
};

}  // namespace

TEST_F(DialogInput, TabGoesThroughTheControlsInTheirOrderAndAround) {
    rig.SignOn("My Name");
    SharedForm<frmAway>().Start();
    User away("Set Away Message");
    ASSERT_TRUE(Focused(away, "cmbScreenname"));
    for (const char* next : {"cmbAway", "txtAway", "cmdSave", "cmdCancel", "cmbScreenname"}) {
        Key(VK_TAB);
        ASSERT_TRUE(Focused(away, next)) << next;
    }
    KeyWith(VK_SHIFT, VK_TAB);
    ASSERT_TRUE(Focused(away, "cmdCancel"));
}

TEST_F(DialogInput, AnAwayMessageByKeyboardAlone) {
    auto first = rig.SignOn("My Name");
    auto second = rig.SignOn("Another");
    SharedForm<frmAway>().Start();
    User away("Set Away Message");
    ASSERT_TRUE(Focused(away, "cmbScreenname"));
    Key(VK_DOWN);
    Key(VK_DOWN);
    ASSERT_TRUE(Reads(away, "cmbScreenname", "Another (Another)"));
    Key(VK_TAB);
    Key(VK_TAB);
    ASSERT_TRUE(Focused(away, "txtAway"));
    TypeKeys("gone");
    Key(VK_RETURN);  // a line of the text, not the default button
    TypeKeys("home");
    ASSERT_TRUE(Reads(away, "txtAway", "gone\r\nhome"));
    Key(VK_TAB);
    Key(VK_RETURN);
    ASSERT_TRUE(Until([] { return !IsShown("Set Away Message"); }));
    EXPECT_EQ(first.server.TakeReceived(), "");
    EXPECT_EQ(second.server.TakeReceived(), Away(2, "gone\r\nhome"));
}

TEST_F(DialogInput, EnterPressesIdleAndEscapeCancels) {
    auto [client, server] = rig.SignOn("My Name");
    SharedForm<frmIdle>().Start();
    User idle("Set Idle Time");
    ASSERT_TRUE(Focused(idle, "txtIdle"));
    TypeKeys("15");
    Key(VK_ESCAPE);
    ASSERT_TRUE(Until([] { return !IsShown("Set Idle Time"); }));
    EXPECT_EQ(server.TakeReceived(), "");
    SharedForm<frmIdle>().Start();
    ASSERT_TRUE(Focused(idle, "txtIdle"));
    TypeKeys("45");
    KeyWith(VK_CONTROL, 'A');
    TypeKeys("30");
    Key(VK_RETURN);
    ASSERT_TRUE(Until([] { return !IsShown("Set Idle Time"); }));
    EXPECT_EQ(server.TakeReceived(), Idle(2, 30));
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
    Key(VK_RETURN);
    ASSERT_TRUE(Focused(replacer, "txtReplace"));
    Key(VK_RETURN);
    ASSERT_TRUE(Until([&] { return replacer.Window().RowCount("lvNames") == 2; }));

    HWND list = WindowOf(replacer, "lvNames");
    RECT row{LVIR_BOUNDS, 0, 0, 0};
    SendMessageA(list, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
    // In the second column: the whole row is to be selected.
    Click(replacer, "lvNames", static_cast<int>(row.right) - 20, static_cast<int>(row.top + row.bottom) / 2);
    ASSERT_TRUE(Until([&] { return replacer.Window().IsRowSelected("lvNames", 0); }));
    Click(replacer, "cmdRemove");
    ASSERT_TRUE(Until([&] { return replacer.Window().RowCount("lvNames") == 1; }));
    Click(replacer, "cmdSave");
    ASSERT_TRUE(Until([] { return !IsShown("Screenname Replacer"); }));
    EXPECT_EQ(os::fake::FileText("/program/repl.dat"), "qwerty\r\nwilma\r\n");
}

TEST_F(DialogInput, ControlTabTurnsThePagesOfTheSettings) {
    SharedForm<frmSettings>().Start(false);
    User settings("Settings");
    KeyWith(VK_CONTROL, VK_TAB);
    EXPECT_TRUE(Until([&] { return settings.Window().Value("SSTab1") == 1; }));
    EXPECT_TRUE(settings.Sees("Text1"));
    Key(VK_ESCAPE);
    EXPECT_TRUE(Until([] { return !IsShown("Settings"); }));
}
