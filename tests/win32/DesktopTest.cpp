// Hotkeys pressed on the real keyboard, windows of programs that hang, and files on the real disk.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "desktop/cRegHotKey.h"
#include "os/Files.h"
#include "os/desktop/FileWriter.h"
#include "os/desktop/TopWindows.h"
#include "sandbox/hand/DesktopUser.h"
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
    static int reports;
    reports = 0;
    const auto before = SetErrorReporter(
        [](const std::string&, std::int32_t, const std::string&, std::int16_t) { ++reports; });
    auto fail = [](auto&&...) { throw RuntimeError(5, "on purpose"); };
    hotKeys.HotKeyPress.Bind(fail);
    hotKeys.RegisterKey("Set Away", VK_F8, kCtrlShift, "lunch");
    for (int time = 1; time <= 2; ++time) {
        PressKeys({VK_CONTROL, VK_SHIFT, VK_F8});
        EXPECT_TRUE(HandleMessagesUntil([=] { return reports == time; }));
    }
    SetErrorReporter(before);
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

TEST(TopWindows, AHungWindowDelaysNobodyAndAnothersLayerStays) {
    const HANDLE thaws = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const HANDLE isMade = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HWND hung = nullptr;
    {
        UserThread program([&] {
            hung = MakeWindow("hung \xE9 - Instant Message");
            SetEvent(isMade);
            WaitForSingleObject(thaws, INFINITE);
            EXPECT_TRUE(HandleMessagesUntil([=] { return AlphaOf(hung) == 76; }));
            DestroyWindow(hung);
        });
        WaitForSingleObject(isMade, INFINITE);
        EXPECT_EQ(os::WindowTitle(Handle(hung)), "hung \xE9 - Instant Message");

        const HWND ordinary = MakeWindow("ordinary");
        const HWND layered = MakeWindow("layered by its own program");
        SetWindowLongA(layered, GWL_EXSTYLE, GetWindowLongA(layered, GWL_EXSTYLE) | WS_EX_LAYERED);
        SetLayeredWindowAttributes(layered, 0, 200, LWA_ALPHA);
        for (const HWND window : {hung, layered, ordinary}) os::MakeTranslucent(Handle(window), 128);
        EXPECT_TRUE(Becomes(ordinary, 128));
        for (const HWND window : {hung, layered, ordinary}) os::MakeOpaque(Handle(window));
        EXPECT_TRUE(Becomes(ordinary, -1));
        EXPECT_EQ(AlphaOf(layered), 200);
        EXPECT_EQ(AlphaOf(hung), -1);
        os::MakeTranslucent(Handle(hung), 76);
        SetEvent(thaws);
        DestroyWindow(ordinary);
        DestroyWindow(layered);
    }
    CloseHandle(thaws);
    CloseHandle(isMade);
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
    void SetUp() override {
        char temporary[MAX_PATH] = "";
        GetTempPathA(sizeof temporary, temporary);
        folder = std::string(temporary) + "wrenlow-writer-" + std::to_string(GetCurrentProcessId());
        CreateDirectoryA(folder.c_str(), nullptr);
        path = folder + "\\setup.exe";
    }
    void TearDown() override {
        for (const auto& name : Names()) DeleteFileA((folder + "\\" + name).c_str());
        RemoveDirectoryA(folder.c_str());
    }

    os::Path Target() const { return os::Path::FromText(path); }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        WIN32_FIND_DATAA found;
        const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE) return names;
        do {
            if (found.cFileName[0] != '.') names.emplace_back(found.cFileName);
        } while (FindNextFileA(search, &found));
        FindClose(search);
        return names;
    }

    std::string folder;
    std::string path;
};

TEST_F(FileWriter, PutsAWholeFileInPlaceOfAReadOnlyOne) {
    { os::FileWriter(Target()).Finish(); }
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    os::FileWriter writer(Target());
    writer.Write("abc");
    writer.Write(std::string(3 << 20, 'x'));
    EXPECT_EQ(Names().size(), 2u);
    writer.MarkFromInternet();
    writer.Finish();
    EXPECT_EQ(Names(), std::vector<std::string>{"setup.exe"});
    WIN32_FILE_ATTRIBUTE_DATA data;
    ASSERT_TRUE(GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data));
    EXPECT_EQ(data.nFileSizeLow, 3u + (3u << 20));
}

// As a virus scanner does: it opens the fresh file and lets nobody rename or delete it, for a moment.
TEST_F(FileWriter, WaitsForWhoeverHoldsTheFreshFile) {
    const std::string other = folder + "\\aliases";
    const auto replaced = os::Path::FromText(other);
    os::ReplaceFileWith(replaced, "old");
    os::FileWriter writer(Target());
    writer.Write("abc");
    const struct {
        std::string held;
        std::function<void()> act;
    } cases[] = {{other, [&] { os::ReplaceFileWith(replaced, "new"); }}, {path, [&] { writer.Finish(); }}};
    for (const auto& [held, act] : cases) {
        const HANDLE scanner = CreateFileA(held.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                           FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(scanner, INVALID_HANDLE_VALUE);
        const UserThread looking([scanner] {
            Sleep(300);
            CloseHandle(scanner);
        });
        EXPECT_NO_THROW(act()) << held;
    }
    EXPECT_EQ(os::ReadWholeFile(replaced, 100), "new");
    EXPECT_EQ(os::ReadWholeFile(Target(), 100), "abc");
    EXPECT_EQ(Names().size(), 2u);
}

TEST_F(FileWriter, LeavesNothingWhenItIsGivenUpOrCannotBegin) {
    {
        os::FileWriter writer(Target());
        writer.Write("abc");
    }
    EXPECT_TRUE(Names().empty());
    EXPECT_THROW(os::FileWriter(os::Path::FromText(folder) / "missing\\setup.exe"), RuntimeError);
    EXPECT_TRUE(Names().empty());
}

}  // namespace
