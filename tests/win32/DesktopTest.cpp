// Hotkeys pressed on the real keyboard, and files on the real disk.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "desktop/cRegHotKey.h"
#include "os/FileWriter.h"
#include "sandbox/hand/DesktopUser.h"
#include "tests/win32/Messages.h"

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
    { os::FileWriter(path).Finish(); }
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    os::FileWriter writer(path);
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

TEST_F(FileWriter, LeavesNothingWhenItIsGivenUpOrCannotBegin) {
    {
        os::FileWriter writer(path);
        writer.Write("abc");
    }
    EXPECT_TRUE(Names().empty());
    EXPECT_THROW(os::FileWriter(folder + "\\missing\\setup.exe"), RuntimeError);
    EXPECT_TRUE(Names().empty());
}

}  // namespace
