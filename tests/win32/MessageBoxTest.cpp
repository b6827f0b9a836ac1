// Message boxes on the real desktop, answered by a user in a thread: the box waits in its caller.
#include "os/MessageBox.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "os/Shell.h"
#include "sandbox/hand/DesktopUser.h"
#include "tests/win32/UserThread.h"

namespace {

constexpr char kTitle[] = "Wrenlow box under test";
constexpr int kIconId = 20;  // of the box's picture, in every version of Windows
constexpr int kIconIdWine = 1088;

// The box, once it can be used.
HWND WaitForBox() {
    HWND box = nullptr;
    EXPECT_TRUE(Eventually([&] {
        box = FindWindowA("#32770", kTitle);
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

TEST(ShellOnTheDesktop, OpensNothingThatIsNoWebPage) {
    for (const char* address : {"", "notepad.exe", "file:///C:/windows/notepad.exe", "http:notepad"})
        EXPECT_FALSE(os::OpenWebPage(0, address)) << address;
}

TEST(ShellOnTheDesktop, AProgramWithoutADescriptionHasItsName) {
    EXPECT_EQ(os::ProgramDescription(), "Wrenlow");
}
