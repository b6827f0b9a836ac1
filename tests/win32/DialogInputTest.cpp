// Dialogs by the system's own keyboard and mouse input: what reaches them through the real queue, the focus
// and the dialog manager, as nothing that a test sends by hand does.
#include <windows.h>

#include <gtest/gtest.h>

#include "app/services/modRegistry.h"
#include "app/windows/SharedForm.h"
#include "app/windows/modError.h"
#include "desktop/frmSettings.h"
#include "desktop/frmWrenlow.h"
#include "features/dialogs/frmAway.h"
#include "features/dialogs/frmSNReplacer.h"
#include "net/EventLoop.h"
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
    rig.SignOn("Another");
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

TEST_F(DialogInput, TabGoesFromTheStripThroughItsPageToTheButtons) {
    SharedForm<frmSettings>().Start();
    User settings("Settings");
    settings.Choose("SSTab1", 2);  // with one control
    ASSERT_TRUE(Focused(settings, "SSTab1"));
    for (const char* next : {"Check2", "cmdOK", "cmdCancel", "cmdApply", "SSTab1"}) {
        PressKey(VK_TAB);
        ASSERT_TRUE(Focused(settings, next)) << next;
    }
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

TEST_F(DialogInput, ARowIsChosenByTheMouseAnywhereInItAndDeletedByItsKey) {
    os::fake::PutFile("/program/repl.dat", "asdf1234\r\nFred\r\nqwerty\r\nwilma\r\n");
    rig.SignOn("My Name");
    SharedForm<frmSNReplacer>().Start();
    User replacer("Screenname Replacer");
    RECT row{LVIR_BOUNDS, 0, 0, 0};
    SendMessageA(WindowOf(replacer, "lvNames"), LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
    // In the second column: the whole row is to be selected.
    Click(replacer, "lvNames", row.right - 20, (row.top + row.bottom) / 2);
    ASSERT_TRUE(HandleMessagesUntil([&] { return replacer.Window().Value("lvNames") == 0; }));
    PressKey(VK_DELETE);
    ASSERT_TRUE(HandleMessagesUntil([&] { return replacer.Window().RowCount("lvNames") == 1; }));
    Click(replacer, "cmdSave");
    ASSERT_TRUE(HandleMessagesUntil([] { return !IsShown("Screenname Replacer"); }));
    EXPECT_EQ(os::fake::FileText("/program/repl.dat"), "qwerty\r\nwilma\r\n");
}

// What the user has copied, once it is there; the clipboard may be busy.
std::string Copied() {
    std::string text;
    HandleMessagesUntil([&] {
        if (!OpenClipboard(nullptr)) return false;
        if (const HANDLE data = GetClipboardData(CF_TEXT)) text = static_cast<const char*>(GlobalLock(data));
        CloseClipboard();
        return !text.empty();
    });
    return text;
}

TEST_F(DialogInput, ErrorWindowsAreCopiedStandBesideEachOtherAndLeaveTheKeyboardWhereItIs) {
    const struct Discarding {
        ~Discarding() { modError::DiscardWindows(); }
    } discarding;
    rig.SignOn("My Name");
    SharedForm<frmSNReplacer>().Start();
    User replacer("Screenname Replacer");
    ASSERT_TRUE(Focused(replacer, "txtScreenname"));
    modError::ReportError("caused by a frame", 5, "first", 0);
    const HWND first = reinterpret_cast<HWND>(User("Wrenlow").Window().Handle());
    modError::ReportError("caused by another", 6, "second", 0);
    User second("Wrenlow");
    const HWND window = reinterpret_cast<HWND>(second.Window().Handle());
    TypeKeys("ab");
    PressKey(VK_RETURN);
    EXPECT_TRUE(Focused(replacer, "txtReplace"));
    EXPECT_EQ(replacer.Window().Text("txtScreenname"), "ab");
    EXPECT_EQ(modError::OpenWindowCount(), 2u) << "the Enter was meant for somebody else";

    RECT before{}, after{};
    GetWindowRect(first, &before);
    GetWindowRect(window, &after);
    EXPECT_GT(after.top, before.top);
    EXPECT_GT(after.left, before.left);

    second.Window().Show();
    ASSERT_TRUE(HandleMessagesUntil([&] { return second.IsActive(); }));
    for (const bool isInText : {false, true}) {
        if (isInText) {
            Click(second, "lblError");  // the caret stands there, nothing is marked
            ASSERT_TRUE(Focused(second, "lblError"));
        }
        ASSERT_TRUE(HandleMessagesUntil([] { return OpenClipboard(nullptr) != FALSE; }));
        EmptyClipboard();
        CloseClipboard();
        PressKeys({VK_CONTROL, 'C'});
        EXPECT_EQ(Copied(), "6: caused by another\r\nat: second: 0");
    }
}

// Also what no code page has whole: Cyrillic, Japanese and an emoji, typed as their own characters.
TEST_F(DialogInput, MessagesAreFoundAndReadByKeyboardAlone) {
    const std::string sun = "\xE5\xA4\xA9", smile = "\xF0\x9F\x98\x80";
    modRegistry::WriteSetting("logwhere", "C:\\AimLogs\\");
    os::fake::PutFile("C:/AimLogs/Ada 2004-05-05.txt", "Ada (09:00:00): hi\r\n");
    os::fake::PutFile("C:/AimLogs/Fred 2004-05-06.txt",
                      "\xEF\xBB\xBF"
                      "Fred (13:05:09): \xD0\x96 " +
                          smile + " " + sun + "\r\n");
    frmWrenlow form;
    User user(form.Window());
    const auto eventually = [&](const auto& answer) {
        return HandleMessagesUntil([&] {
            net::RunEventLoopUntil([] { return false; }, WrenlowPage::kRefreshMs);
            return answer();
        });
    };
    form.Start("Messages");
    ASSERT_TRUE(Focused(user, "SSTab1"));
    PressKey(VK_TAB);
    ASSERT_TRUE(Focused(user, "logSearch"));
    TypeText(L"\x5929 \xD83D\xDE00");
    ASSERT_TRUE(eventually([&] { return form.Window().RowCount("logHits") == 1; }));
    EXPECT_EQ(form.Window().Text("logSearch"), sun + " " + smile);
    wchar_t drawn[64] = L"";
    LVITEMW cell{};
    cell.iSubItem = 2;
    cell.pszText = drawn;
    cell.cchTextMax = 64;
    SendMessageW(WindowOf(user, "logHits"), LVM_GETITEMTEXTW, 0, reinterpret_cast<LPARAM>(&cell));
    EXPECT_EQ(drawn, std::wstring(L"\x0416 [\xD83D\xDE00] [\x5929]"));
    PressKey(VK_TAB);
    ASSERT_TRUE(Focused(user, "logHits"));
    PressKey(VK_DOWN);
    PressKey(VK_UP);
    ASSERT_TRUE(eventually([&] { return user.Marked("logText") == smile; }));
    PressKey(VK_RETURN);
    ASSERT_TRUE(Focused(user, "logText"));
    EXPECT_EQ(form.Window().Text("logText"), "13:05:09 Fred: \xD0\x96 " + smile + " " + sun + "\r\n");
    for (const char* before : {"logDays", "logNames"}) {
        PressKeys({VK_SHIFT, VK_TAB});
        ASSERT_TRUE(Focused(user, before));
    }
    PressKey(VK_UP);
    EXPECT_TRUE(eventually([&] { return form.Window().Text("logText") == "09:00:00 Ada: hi\r\n"; }));
}

// A large dialog at 200 % on a small screen.
TEST_F(DialogInput, AWindowHigherThanItsScreenScrollsToTheFocus) {
    static constexpr os::Control kBoxes[] = {{os::ControlKind::TextBox, "first", "", {7, 7, 60, 12}},
                                             {os::ControlKind::TextBox, "last", "", {7, 880, 60, 12}}};
    static constexpr os::DialogTable kTable{"high", 80, 900, kBoxes};
    os::Dialog dialog(kTable);
    dialog.Show();
    User user(dialog);
    ASSERT_TRUE(Focused(user, "first"));
    RECT window{}, inside{}, box{};
    GetWindowRect(reinterpret_cast<HWND>(dialog.Handle()), &window);
    EXPECT_LE(window.bottom - window.top, GetSystemMetrics(SM_CYSCREEN));
    PressKey(VK_TAB);
    ASSERT_TRUE(Focused(user, "last"));
    GetClientRect(reinterpret_cast<HWND>(dialog.Handle()), &inside);
    MapWindowPoints(reinterpret_cast<HWND>(dialog.Handle()), nullptr, reinterpret_cast<POINT*>(&inside), 2);
    EXPECT_TRUE(HandleMessagesUntil([&] {
        GetWindowRect(WindowOf(user, "last"), &box);
        return box.top >= inside.top && box.bottom <= inside.bottom;
    }));
}

// Run with a double-byte code page by the step wine-932; in the others a character is a byte.
TEST_F(DialogInput, ALimitCountsBytesWhereACharacterHasTwo) {
    if (GetACP() != 932) GTEST_SKIP() << "one byte a character here";
    static constexpr os::Control kBox[] = {{os::ControlKind::TextBox, "txt", "", {7, 7, 60, 12}}};
    static constexpr os::DialogTable kTable{"limited", 80, 40, kBox};
    os::Dialog dialog(kTable);
    int cuts = 0;
    dialog.LimitText("txt", 5);
    dialog.OnFull("txt", [&] { ++cuts; });
    dialog.Show();
    User user(dialog);
    const std::string letter = "\x82\xA0";  // hiragana A
    user.Type("txt", letter + letter + "a");
    EXPECT_EQ(dialog.Text("txt"), letter + letter + "a");
    EXPECT_EQ(cuts, 0);
    user.Type("txt", letter + letter + letter);
    EXPECT_EQ(dialog.Text("txt"), letter + letter);
    EXPECT_EQ(cuts, 1);
}

TEST_F(DialogInput, ControlTabTurnsThePagesOfTheSettings) {
    SharedForm<frmSettings>().Start();
    User settings("Settings");
    PressKeys({VK_CONTROL, VK_TAB});
    EXPECT_TRUE(HandleMessagesUntil([&] { return settings.Window().Value("SSTab1") == 1; }));
    EXPECT_TRUE(settings.Sees("Text1"));
    PressKey(VK_ESCAPE);
    EXPECT_TRUE(HandleMessagesUntil([] { return !IsShown("Settings"); }));
}
