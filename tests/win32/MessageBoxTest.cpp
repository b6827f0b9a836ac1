// Message boxes on the real desktop, answered by a user in a thread: the box waits in its caller.
#include "os/desktop/MessageBox.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>

#include "os/desktop/Shell.h"
#include "os/win32/DialogImpl.h"
#include "sandbox/hand/DesktopUser.h"
#include "tests/win32/UserThread.h"

namespace {

constexpr char kTitle[] = "Wrenlow box under test";
constexpr int kIconId = 20;  // of the box's picture, in every version of Windows
constexpr int kIconIdWine = 1088;

// The box, once it can be used.
HWND WaitForBox(const char* title = kTitle) {
    HWND box = nullptr;
    EXPECT_TRUE(Eventually([&] {
        box = FindWindowA("#32770", title);
        return box != nullptr && IsWindowVisible(box);
    }));
    return box;
}

os::BoxResult Show(os::BoxIcon icon, os::BoxButtons buttons, const std::function<void(HWND)>& user) {
    const UserThread thread([&] {
        if (const HWND box = WaitForBox()) user(box);
    });
    return os::ShowMessageBox("First line\r\nsecond line", kTitle, icon, buttons);
}

bool HasIcon(HWND box) {
    return GetDlgItem(box, kIconId) != nullptr || GetDlgItem(box, kIconIdWine) != nullptr;
}

}  // namespace

TEST(MessageBoxOnTheDesktop, EachButtonIsItsAnswerAndClosingTheOneThatDoesLeast) {
    using os::BoxButtons, os::BoxIcon, os::BoxResult;
    constexpr int kClose = 0;
    const struct {
        BoxButtons buttons;
        int press;
        BoxResult result;
        BoxIcon icon = BoxIcon::Question;
    } cases[] = {
        {BoxButtons::Ok, IDOK, BoxResult::Ok},
        {BoxButtons::OkCancel, IDOK, BoxResult::Ok},
        {BoxButtons::OkCancel, IDCANCEL, BoxResult::Cancel},
        {BoxButtons::YesNo, IDYES, BoxResult::Yes},
        {BoxButtons::YesNo, IDNO, BoxResult::No},
        {BoxButtons::YesNoCancel, IDNO, BoxResult::No},
        {BoxButtons::YesNoCancel, IDCANCEL, BoxResult::Cancel},
        {BoxButtons::Ok, kClose, BoxResult::Ok, BoxIcon::None},
        {BoxButtons::OkCancel, kClose, BoxResult::Cancel, BoxIcon::Error},
    };
    for (const auto& test : cases) {
        const auto result = Show(test.icon, test.buttons, [&](HWND box) {
            EXPECT_TRUE(test.icon == BoxIcon::None || HasIcon(box));
            const HWND button = GetDlgItem(box, test.press);
            EXPECT_EQ(button != nullptr, test.press != kClose);
            PostMessageA(button != nullptr ? button : box, button != nullptr ? BM_CLICK : WM_CLOSE, 0, 0);
        });
        EXPECT_EQ(result, test.result) << test.press;
    }
}

using Kind = os::ControlKind;
constexpr os::Control kControls[] = {
    {Kind::TextBox, "txtFirst", "", {7, 7, 60, 12}},
    {Kind::TextBox, "txtSecond", "", {7, 22, 60, 12}},
    {Kind::DefaultButton, "cmdOK", "OK", {7, 40, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {60, 40, 50, 14}},
};
constexpr os::DialogTable kAsking{"Wrenlow asks", 120, 60, kControls};
constexpr os::DialogTable kOther{"Wrenlow types", 120, 60, kControls};

HWND WindowOf(const os::Dialog& dialog) {
    return reinterpret_cast<HWND>(dialog.Handle());
}

HWND ControlOf(const os::Dialog& dialog, int number) {
    HWND window = GetWindow(WindowOf(dialog), GW_CHILD);
    for (; number > 0; --number) window = GetWindow(window, GW_HWNDNEXT);
    return window;
}

bool HasKeyboard(const os::Dialog& dialog, int control) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(WindowOf(dialog), nullptr), &info);
    return info.hwndFocus == ControlOf(dialog, control);
}

void GoOnWith(const os::Dialog& dialog, int control) {
    RECT place{};
    GetWindowRect(ControlOf(dialog, control), &place);
    ClickAt((place.left + place.right) / 2, (place.top + place.bottom) / 2);
    EXPECT_TRUE(Eventually([&] { return HasKeyboard(dialog, control); }));
}

// Two dialogs side by side; the one asks in a box while the user goes on with the other.
TEST(MessageBoxOnTheDesktop, LeavesTheKeysToOtherDialogsAndComesForwardWithItsOwn) {
    const HWND owner =
        CreateWindowA("STATIC", "owner", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    os::SetDialogOwner(reinterpret_cast<os::WindowHandle>(owner));
    {
        os::Dialog asking(kAsking);
        os::Dialog other(kOther);
        std::atomic<int> entered = 0, escaped = 0;
        auto answer = os::BoxResult::Ok;
        auto news = os::BoxResult::Cancel;
        asking.On("cmdOK", [&] {
            answer = os::ShowMessageBox("What now?", kTitle, os::BoxIcon::Question, os::BoxButtons::YesNo);
        });
        other.On("cmdOK", [&] {
            if (++entered == 1) asking.Show();
        });
        other.On("cmdCancel", [&] {
            ++escaped;
            news = os::ShowMessageBox("News", "Wrenlow news");
        });
        asking.Show();
        other.Show();
        SetWindowPos(WindowOf(asking), nullptr, 20, 20, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        SetWindowPos(WindowOf(other), nullptr, 20, 400, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        const UserThread user([&] {
            const HWND box = WaitForBox();
            GoOnWith(other, 0);
            PressKey(VK_TAB);
            EXPECT_TRUE(Eventually([&] { return HasKeyboard(other, 1); }));
            PressKey(VK_RETURN);
            EXPECT_TRUE(Eventually([&] { return entered == 1; }));
            EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() == box; })) << "asked for its dialog";

            GoOnWith(other, 1);
            PressKey(VK_ESCAPE);
            const HWND newsBox = WaitForBox("Wrenlow news");
            PostMessageA(GetDlgItem(newsBox, IDOK), BM_CLICK, 0, 0);
            EXPECT_TRUE(Eventually([&] { return !IsWindow(newsBox); }));
            EXPECT_EQ(escaped, 1);
            PostMessageA(GetDlgItem(box, IDNO), BM_CLICK, 0, 0);
        });
        os::DialogAccess::Of(asking).PressOrClose(os::RowOf(kAsking, "cmdOK"));
        EXPECT_EQ(answer, os::BoxResult::No);
        EXPECT_EQ(news, os::BoxResult::Ok);
    }
    os::SetDialogOwner(0);
    DestroyWindow(owner);
}

// About, and that nobody is signed on: chosen again and again.
TEST(MessageBoxOnTheDesktop, NewsStandsOnceAndComesForwardWhenItIsToldAgain) {
    os::Dialog other(kOther);
    std::atomic<int> again = 0;
    other.On("cmdOK", [&] {
        EXPECT_EQ(os::ShowMessageBox("First line\r\nsecond line", kTitle), os::BoxResult::Ok);
        ++again;
    });
    other.Show();
    SetWindowPos(WindowOf(other), nullptr, 20, 400, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    Show(os::BoxIcon::Information, os::BoxButtons::Ok, [&](HWND box) {
        GoOnWith(other, 0);
        PressKey(VK_RETURN);
        EXPECT_TRUE(Eventually([&] { return again == 1; })) << "a second box waits for an answer";
        EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() == box; }));
        PostMessageA(GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
    });
}

TEST(ShellOnTheDesktop, OpensNothingThatIsNoWebPage) {
    for (const char* address : {"", "notepad.exe", "file:///C:/windows/notepad.exe", "http:notepad"})
        EXPECT_FALSE(os::OpenWebPage(0, address)) << address;
}

TEST(ShellOnTheDesktop, AProgramWithoutADescriptionHasItsName) {
    EXPECT_EQ(os::ProgramDescription(), "Wrenlow");
}
