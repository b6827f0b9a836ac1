// The tray icon and its menu on the real desktop, used with mouse and keyboard; everything else is fake.
//
// An open menu runs a loop of its own, so the user of these tests is a thread. It waits for what it wants to
// see, with a bound, and takes the menu away at the end: a test that goes wrong does not hang.
#include <windows.h>
// after windows.h
#include <shellapi.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <optional>

#include "app/shell/modMenu.h"
#include "base/RuntimeError.h"
#include "os/fake/FakeWorld.h"
#include "os/win32/HiddenWindow.h"
#include "sandbox/hand/DesktopUser.h"
#include "tests/unit/Reported.h"
#include "tests/win32/Messages.h"
#include "tests/win32/UserThread.h"
#include "ui/popupmenu/ColourSchemes.h"

namespace {

constexpr UINT kTrayCallback = fSysTrayIconMenu::kCallbackMessage;

// Runs tasks from the message loop, the menu's own loop too.
class Tasks final : public os::HiddenWindow {
 public:
    Tasks() : HiddenWindow("tasks") {}
    void Post(std::function<void()> task) {
        PostMessageA(Handle(), WM_APP, 0, reinterpret_cast<LPARAM>(new std::function(std::move(task))));
    }

 protected:
    std::optional<LRESULT> OnMessage(UINT message, WPARAM, LPARAM lParam) override {
        if (message != WM_APP) return std::nullopt;
        const std::unique_ptr<std::function<void()>> task(reinterpret_cast<std::function<void()>*>(lParam));
        (*task)();
        return 0;
    }
};

// What the taskbar posts for a right press on the icon.
void PostRightPress() {
    PostMessageA(TrayWindowHandle(), kTrayCallback, 0, WM_RBUTTONDOWN);
}

// Runs the user's steps while messages are handled here. No menu may be left open.
void Use(const std::function<void()>& steps) {
    std::atomic<bool> done = false;
    const UserThread user([&] {
        steps();
        if (!MenusOpen(0)) {
            ADD_FAILURE() << "a menu was left open";
            PostMessageA(FindWindowA("WrenlowHidden", "Wrenlow menu"), WM_CANCELMODE, 0, 0);
        }
        done = true;
    });
    while (!HandleMessagesUntil([&] { return done.load(); })) {
    }
    HandleMessages();
}

class RealTray : public testing::Test {
 protected:
    RealTray() {
        os::fake::ResetWorld();
        modMenu::LoadMenuIcons(images_);
        owner_ = CreateWindowA("STATIC", "owner", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
        host_ = modMenu::BuildTrayMenu(reinterpret_cast<os::WindowHandle>(owner_), images_);
        host_->SysTrayMouseDown.Bind<&RealTray::host_SysTrayMouseDown>(*this);
        host_->SysTrayMouseMove.Bind<&RealTray::host_SysTrayMouseMove>(*this);
        host_->MenuClick.Bind<&RealTray::host_MenuClick>(*this);
        SetCursorPos(100, 100);
    }

    ~RealTray() override {
        host_.reset();
        DestroyWindow(owner_);
    }

    void host_SysTrayMouseDown(std::int32_t button) {
        if (button == 2) host_->ShowMenu();
        ++presses_;
    }

    void host_SysTrayMouseMove() { ++moves_; }

    void host_MenuClick(std::int32_t, const std::string& key) {
        chosen_ = key;
        if (fails_) throw RuntimeError(5, "on purpose");
        modMenu::DoMenuCommand(key);
    }

    // Moves the mouse over the icon until it is noticed: the taskbar draws the icon when it gets to it.
    bool HoverOverIcon() const {
        const auto place = IconPlace();
        const int before = moves_;
        int step = 0;
        return Eventually([&] {
            SetCursorPos(place.x - (++step % 2), place.y);
            return moves_ > before;
        });
    }

    // Asks the notification area about the icon; changing it without saying what changes nothing.
    bool Notify(DWORD what) const {
        NOTIFYICONDATAA data{};
        data.cbSize = NOTIFYICONDATAA_V1_SIZE;
        data.hWnd = TrayWindowHandle();
        data.uID = host_->Record().id;
        return Shell_NotifyIconA(what, &data) != FALSE;
    }
    bool IconIsThere() const { return Notify(NIM_MODIFY); }

    Tasks tasks_;
    ImageList images_;
    HWND owner_ = nullptr;
    std::unique_ptr<fSysTrayIconMenu> host_;
    std::string chosen_;
    bool fails_ = false;
    int presses_ = 0;
    std::atomic<int> moves_ = 0;
};

}  // namespace

TEST_F(RealTray, EntriesOfMenuAndSubMenusAreReachedByTheKeyboard) {
    const struct {
        const char* key;
        const wchar_t* entry;
        const wchar_t* subMenuOf;
    } cases[] = {
        {"snreplace", L"Screenname Replacer...", nullptr},
        {"setback", L"Back", L"Away Message"},
        {"noidle", L"Remove Idle", L"Idle Control"},
        {"settings", L"Settings...", nullptr},
        {"close", L"Close", nullptr},
    };
    for (const auto& test : cases) {
        chosen_.clear();
        PostRightPress();
        Use([&] {
            ASSERT_TRUE(MenusOpen(1));
            if (test.subMenuOf != nullptr) {
                ASSERT_TRUE(GoDownTo(test.subMenuOf)) << test.key;
                PressKey(VK_RIGHT);
                ASSERT_TRUE(MenusOpen(2)) << test.key;
            }
            ASSERT_TRUE(GoDownTo(test.entry)) << test.key;
            PressKey(VK_RETURN);
        });
        EXPECT_EQ(chosen_, test.key);
    }
}

TEST_F(RealTray, ALetterChoosesAndAChoiceThatFailsIsReportedAndTheMenuOpensAgain) {
    const Reported reported;
    fails_ = true;
    for (std::size_t time = 1; time <= 2; ++time) {
        PostRightPress();
        Use([] {
            ASSERT_TRUE(MenusOpen(1));
            PressKey('E');
        });
        EXPECT_EQ(chosen_, "editprofile");  // the only entry that begins with it
        EXPECT_EQ(Reported::reports.size(), time);
    }
}

TEST_F(RealTray, EscAndAClickElsewhereRaiseNothing) {
    for (const bool byKey : {true, false}) {
        PostRightPress();
        Use([=] {
            ASSERT_TRUE(MenusOpen(1));
            byKey ? PressKey(VK_ESCAPE) : ClickAt(30, 300);
        });
    }
    EXPECT_EQ(presses_, 2);
    EXPECT_EQ(chosen_, "");
}

TEST_F(RealTray, ARightClickOnTheIconOpensTheMenuAtTheCursorOnce) {
    const auto place = IconPlace();
    Use([&] {
        ASSERT_TRUE(HoverOverIcon());
        ClickAt(place.x, place.y, MOUSEEVENTF_RIGHTDOWN | MOUSEEVENTF_RIGHTUP);
        ASSERT_TRUE(MenusOpen(1));
        RECT menu{};
        GetWindowRect(OpenMenus().front(), &menu);
        EXPECT_TRUE(menu.right >= place.x || menu.left >= place.x);
        EXPECT_LE(menu.bottom, place.y + 1);  // there is no room below the cursor

        // Another press with the menu open; what is posted behind it is dealt with later.
        PostRightPress();
        std::atomic<bool> dealtWith = false;
        tasks_.Post([&] { dealtWith = true; });
        EXPECT_TRUE(Eventually([&] { return dealtWith.load(); }));
        EXPECT_EQ(OpenMenus().size(), 1u);

        // The entry at the bottom.
        ClickAt(menu.left + 40, menu.bottom - 12);
    });
    EXPECT_EQ(chosen_, "close");
}

TEST_F(RealTray, TheIconHasItsTooltip) {
    Use([&] {
        ASSERT_TRUE(HoverOverIcon());
        EXPECT_TRUE(Eventually([] { return TooltipSays(L"Wrenlow"); }));
    });
}

TEST_F(RealTray, TheTaskbarsAnnouncementBringsTheIconBackAndUnloadingRemovesIt) {
    EXPECT_TRUE(IconIsThere());
    ASSERT_TRUE(Notify(NIM_DELETE));  // what a new taskbar knows: nothing
    ASSERT_FALSE(IconIsThere());
    PostMessageA(HWND_BROADCAST, RegisterWindowMessageA("TaskbarCreated"), 0, 0);
    EXPECT_TRUE(HandleMessagesUntil([&] { return IconIsThere(); }));
    host_->Form_QueryUnload();
    EXPECT_FALSE(IconIsThere());
}

TEST_F(RealTray, TheHostMayGoWhileItsMenuIsOpen) {
    PostRightPress();
    Use([&] {
        ASSERT_TRUE(MenusOpen(1));
        // While the menu is open, as at the end of the session.
        std::atomic<bool> gone = false;
        tasks_.Post([&] {
            host_.reset();
            gone = true;
        });
        ASSERT_TRUE(Eventually([&] { return gone.load(); }));
        PressKey(VK_DOWN);
        PressKey(VK_RETURN);
    });
    EXPECT_EQ(host_, nullptr);
    EXPECT_EQ(chosen_, "");
}

TEST_F(RealTray, ASchemeColoursTheWholeMenu) {
    host_->PopupMenuObject().ColourScheme(kDarkScheme);
    PostRightPress();
    Use([] {
        ASSERT_TRUE(MenusOpen(1));
        RECT menu{};
        GetWindowRect(OpenMenus().front(), &menu);
        const HDC screen = GetDC(nullptr);
        // Down the middle of the space left of the icons' column, where nothing but background is.
        EXPECT_TRUE(Eventually([&] {
            for (LONG y = menu.top + 4; y < menu.bottom - 4; ++y) {
                if (GetPixel(screen, static_cast<int>(menu.left + 5), static_cast<int>(y)) !=
                    RGB(0x24, 0x27, 0x2B))
                    return false;
            }
            return true;
        }));
        ReleaseDC(nullptr, screen);
        PressKey(VK_ESCAPE);
    });
}
