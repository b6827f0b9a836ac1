// Hotkeys pressed on the real keyboard, other programs' windows, and files on the real disk.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "desktop/cRegHotKey.h"
#include "os/Files.h"
#include "os/desktop/FileWriter.h"
#include "os/desktop/TopWindows.h"
#include "sandbox/hand/DesktopUser.h"
#include "tests/unit/Reported.h"
#include "tests/win32/ImportPatch.h"
#include "tests/win32/Messages.h"
#include "tests/win32/UserThread.h"

namespace {

constexpr std::uint32_t kCtrlShift = os::HotkeyModifier::Ctrl | os::HotkeyModifier::Shift;

HWND MakeWindow(const char* title) {
    return CreateWindowA("STATIC", title, WS_VISIBLE, 20, 20, 150, 80, nullptr, nullptr, nullptr, nullptr);
}

class Hotkeys : public testing::Test {
 protected:
    void SetUp() override {
        window = MakeWindow("hotkeys");
        hotKeys.Attach(reinterpret_cast<os::WindowHandle>(window));
    }
    void TearDown() override {
        if (IsWindow(window)) DestroyWindow(window);
    }

    HWND window = nullptr;
    cRegHotKey hotKeys;
};

TEST_F(Hotkeys, AListenerThatFailsIsReportedAndHearsTheNextPress) {
    const Reported reported;
    auto fail = [](auto&&...) { throw RuntimeError(5, "on purpose"); };
    hotKeys.HotKeyPress.Bind(fail);
    hotKeys.RegisterKey("Set Away", VK_F8, kCtrlShift, "lunch");
    for (std::size_t time = 1; time <= 2; ++time) {
        PressKeys({VK_CONTROL, VK_SHIFT, VK_F8});
        EXPECT_TRUE(HandleMessagesUntil([=] { return Reported::reports.size() == time; }));
    }
}

TEST_F(Hotkeys, ACombinationThatSomebodyHoldsIsRefusedInTheSystemsWords) {
    ASSERT_TRUE(RegisterHotKey(nullptr, 1, kCtrlShift, VK_F7));
    try {
        hotKeys.RegisterKey("Panic!", VK_F7, kCtrlShift, "");
        FAIL() << "the combination was taken twice";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.Number(), cRegHotKey::kNotRegistered);
        const std::string text = error.what();
        EXPECT_TRUE(text.starts_with("Failed to Register Hot Key [") && text.ends_with("]")) << text;
        EXPECT_GT(text.size(), sizeof "Failed to Register Hot Key []") << text;
    }
    UnregisterHotKey(nullptr, 1);
    hotKeys.RegisterKey("Panic!", VK_F7, kCtrlShift, "");  // the name is still free
}

TEST_F(Hotkeys, TheEndOfTheWindowGivesTheKeysBack) {
    hotKeys.RegisterKey("Set Away", VK_F8, kCtrlShift, "");
    DestroyWindow(window);
    EXPECT_TRUE(RegisterHotKey(nullptr, 1, kCtrlShift, VK_F8));
    UnregisterHotKey(nullptr, 1);
}

TEST_F(Hotkeys, TheWindowHearsItsOwnMessagesToo) {
    SetWindowTextA(window, "renamed");
    char text[32] = "";
    GetWindowTextA(window, text, sizeof text);
    EXPECT_STREQ(text, "renamed");
    hotKeys.Attach(0);
    SetWindowTextA(window, "again");
    GetWindowTextA(window, text, sizeof text);
    EXPECT_STREQ(text, "again") << "the window's own procedure is back";
}

// -1 for a window without a layer.
int AlphaOf(HWND window) {
    BYTE alpha = 0;
    DWORD flags = 0;
    return GetLayeredWindowAttributes(window, nullptr, &alpha, &flags) && flags == LWA_ALPHA ? alpha : -1;
}

os::WindowHandle Handle(HWND window) {
    return reinterpret_cast<os::WindowHandle>(window);
}

bool Becomes(HWND window, int alpha) {
    return HandleMessagesUntil([=] { return AlphaOf(window) == alpha; });
}

// That a window of a program that hangs delays nobody, the desk shows (tests/desk).
TEST(TopWindows, OnlyTheLayerThatWeMadeIsTakenAway) {
    const HWND ordinary = MakeWindow("ordinary \xE9 - Instant Message");
    EXPECT_EQ(os::WindowTitle(Handle(ordinary)), "ordinary \xE9 - Instant Message");
    const HWND layered = MakeWindow("layered by its own program");
    SetWindowLongA(layered, GWL_EXSTYLE, GetWindowLongA(layered, GWL_EXSTYLE) | WS_EX_LAYERED);
    SetLayeredWindowAttributes(layered, 0, 200, LWA_ALPHA);
    for (const HWND window : {layered, ordinary}) os::MakeTranslucent(Handle(window), 128);
    EXPECT_TRUE(Becomes(ordinary, 128));
    for (const HWND window : {layered, ordinary}) os::MakeOpaque(Handle(window));
    EXPECT_TRUE(Becomes(ordinary, -1));
    EXPECT_EQ(AlphaOf(layered), 200);
    DestroyWindow(ordinary);
    DestroyWindow(layered);
}

std::atomic<int> refusedAttributes;

// As a window does that paints itself by other means.
BOOL WINAPI RefuseAttributes(HWND, COLORREF, BYTE, DWORD) {
    ++refusedAttributes;
    return FALSE;
}

TEST(TopWindows, AWindowThatRefusesTheAttributesIsLeftAsItWas) {
    const ImportPatch patch("SetLayeredWindowAttributes", RefuseAttributes);
    refusedAttributes = 0;
    const HWND window = MakeWindow("refuses");
    const LONG style = GetWindowLongA(window, GWL_EXSTYLE);
    os::MakeTranslucent(Handle(window), 128);
    EXPECT_TRUE(HandleMessagesUntil([&] {
        return refusedAttributes > 0 && GetWindowLongA(window, GWL_EXSTYLE) == style &&
               GetPropA(window, "Wrenlow.MadeLayered") == nullptr;
    }));
    DestroyWindow(window);
}

class FileWriter : public testing::Test {
 protected:
    FileWriter() {
        os::MakeFolder(folder);
        for (const auto& name : Names()) os::RemoveFile(folder / name);
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        os::FolderReader reader(folder);
        while (const auto entry = reader.Next()) names.push_back(entry->name);
        return names;
    }

    const os::Path folder = os::ProgramFolder() / (os::ProgramBaseName() + "-writer");
    const os::Path path = folder / "setup.exe";
};

TEST_F(FileWriter, PutsAWholeFileInPlaceOfAReadOnlyOne) {
    { os::FileWriter(path).Finish(); }
    SetFileAttributesA(path.Shown().c_str(), FILE_ATTRIBUTE_READONLY);
    os::FileWriter writer(path);
    writer.Write("abc");
    writer.Write(std::string(3 << 20, 'x'));
    EXPECT_EQ(Names().size(), 2u);
    writer.MarkFromInternet();
    writer.Finish();
    EXPECT_EQ(Names(), std::vector<std::string>{"setup.exe"});
    EXPECT_EQ(os::ReadWholeFile(path, 4 << 20), "abc" + std::string(3 << 20, 'x'));
}

// As a virus scanner does: it opens the fresh file and lets nobody rename or delete it, for a moment.
TEST_F(FileWriter, WaitsForWhoeverHoldsTheFreshFile) {
    const auto other = folder / "aliases";
    os::ReplaceFileWith(other, "old");
    os::FileWriter writer(path);
    writer.Write("abc");
    const struct {
        os::Path held;
        std::function<void()> act;
    } cases[] = {{other, [&] { os::ReplaceFileWith(other, "new"); }}, {path, [&] { writer.Finish(); }}};
    for (const auto& [held, act] : cases) {
        const HANDLE scanner = CreateFileA(held.Shown().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                           OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(scanner, INVALID_HANDLE_VALUE);
        const UserThread looking([scanner] {
            Sleep(300);
            CloseHandle(scanner);
        });
        EXPECT_NO_THROW(act()) << held.Shown();
    }
    EXPECT_EQ(os::ReadWholeFile(other, 100), "new");
    EXPECT_EQ(os::ReadWholeFile(path, 100), "abc");
    EXPECT_EQ(Names().size(), 2u);
}

TEST_F(FileWriter, LeavesNothingWhenItIsGivenUpOrCannotBegin) {
    {
        os::FileWriter writer(path);
        writer.Write("abc");
    }
    EXPECT_TRUE(Names().empty());
    EXPECT_THROW(os::FileWriter(folder / "missing/setup.exe"), RuntimeError);
    EXPECT_TRUE(Names().empty());
}

}  // namespace
