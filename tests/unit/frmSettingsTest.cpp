#include "desktop/frmSettings.h"

#include <gtest/gtest.h>

#include <map>

#include "app/services/SharedForm.h"
#include "app/services/modRegistry.h"
#include "base/Trap.h"
#include "desktop/frmUpdate.h"
#include "desktop/modTrans.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeHotkeys.h"
#include "os/fake/FakeMessageBox.h"
#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeTopWindows.h"
#include "os/fake/FakeWorld.h"

namespace {

using os::fake::DialogUser;

constexpr os::WindowHandle kMainWindow = 0x77;
constexpr const char* kHotkeysKey = "software\\Wrenlow\\hotkeys\\";
constexpr const char* kRunKey = "software\\microsoft\\windows\\CurrentVersion\\run";
constexpr int kTranslucencyPage = 3;
constexpr int kHotkeysPage = 4;

std::string reported;
void KeepReport(const std::string& description, std::int32_t number, const std::string& where, std::int16_t) {
    reported += where + " " + std::to_string(number) + " " + description + ";";
}

std::string Hotkey(const std::string& name) {
    return modRegistry::QueryValue(os::RegistryHive::CurrentUser, kHotkeysKey, name);
}

std::string RunEntry() {
    return modRegistry::QueryValue(os::RegistryHive::CurrentUser, kRunKey, "Wrenlow");
}

class Settings : public testing::Test {
 protected:
    void SetUp() override {
        os::fake::ResetWorld();
        os::fake::ResetRegistry();
        os::fake::ResetMessageBoxes();
        os::fake::ResetHotkeys();
        os::fake::ResetTopWindows();
        reported.clear();
        earlierReporter = SetErrorReporter(KeepReport);
        modHotKeys::InitHotKeys(hotKeys, kMainWindow);
    }
    void TearDown() override {
        modHotKeys::ReleaseHotKeys();
        UnloadForms();
        SetErrorReporter(earlierReporter);
    }

    void Open(int page = 0) {
        form.Start(false);
        if (page != 0) user.Choose("SSTab1", page);
    }

    void ChooseText(os::ControlId list, const std::string& entry) {
        for (int i = 0; i < dialog.EntryCount(list); ++i) {
            if (dialog.Entry(list, i) == entry) return user.Choose(list, i);
        }
        FAIL() << "no entry " << entry;
    }

    void AddHotkey(const char* first, const char* second, const char* key, const char* action,
                   const char* text) {
        ChooseText({"cmbHK", 0}, first);
        ChooseText({"cmbHK", 1}, second);
        ChooseText({"cmbHK", 2}, key);
        ChooseText("cmbHKAction", action);
        if (text != nullptr) user.Type("txtHKText", text);
        user.Press("cmdHKAdd");
    }

    std::string OnlyBox() {
        const auto boxes = os::fake::ShownBoxes();
        os::fake::ResetMessageBoxes();
        if (boxes.size() != 1) return std::to_string(boxes.size()) + " boxes";
        return boxes.front().icon == os::BoxIcon::Error ? boxes.front().text : "not critical";
    }

    // The combinations that the system holds for us, as modifiers/key.
    static std::string Held() {
        std::string held;
        for (const auto& hotkey : os::fake::HeldHotkeys()) {
            held += std::to_string(hotkey.modifiers) + "/" + std::to_string(hotkey.key) + " ";
        }
        return held;
    }

    ErrorReporter earlierReporter = nullptr;
    cRegHotKey hotKeys;
    frmSettings form;
    os::Dialog& dialog = form.Window();
    DialogUser user{dialog};
};

constexpr const char* kAway = "Set away message";
constexpr const char* kBack = "Clear away message";
constexpr const char* kPanic = "Panic! (Shut down AIM and Wrenlow)";

TEST_F(Settings, AnEmptyStoreGetsEveryDefaultOnceAndIsPutInForceUnseen) {
    form.Start(true);
    EXPECT_FALSE(dialog.IsShown());
    const std::map<std::string, std::string> defaults = {
        {"checkupdate", "1"},  {"setupaim", "1"},     {"revertsettings", "0"}, {"onstartup", "1"},
        {"enablehotkey", "0"}, {"trans1", "0"},       {"trans2", "0"},         {"trans3", "0"},
        {"trans4", "0"},       {"transamount", "30"}, {"logims", "0"},         {"logwhere", "C:\\AimLogs\\"},
        {"logfolder", "0"},    {"logwhat", "True"},   {"loghowtxt", "False"},  {"loghowhtm", "True"},
        {"seehtml", "0"},
    };
    for (const auto& [name, value] : defaults) EXPECT_EQ(modRegistry::ReadSetting(name), value) << name;
    EXPECT_EQ(Hotkey("n"), "0");
    EXPECT_EQ(RunEntry(), "/program\\wrenlow.exe");
    EXPECT_EQ(os::fake::RegistryChanges(), 17 + 1 + 1);
    form.Start(true);
    EXPECT_EQ(os::fake::RegistryChanges(), 17 + 1 + 1 + 1) << "only the Run entry is written each time";
}

TEST_F(Settings, EveryControlLoadsAndSavesTheSettingOfItsTag) {
    const std::map<std::string, std::string> others = {
        {"checkupdate", "0"},  {"setupaim", "0"},     {"revertsettings", "1"}, {"onstartup", "0"},
        {"enablehotkey", "1"}, {"trans1", "1"},       {"trans2", "1"},         {"trans3", "1"},
        {"trans4", "1"},       {"transamount", "77"}, {"logims", "1"},         {"logwhere", "D:\\Logs\\"},
        {"logfolder", "1"},    {"logwhat", "False"},  {"loghowtxt", "True"},   {"loghowhtm", "False"},
        {"seehtml", "1"},
    };
    for (const auto& [name, value] : others) modRegistry::WriteSetting(name, value);
    Open();
    os::fake::ResetRegistry();
    user.Press("cmdApply");
    for (const auto& [name, value] : others) EXPECT_EQ(modRegistry::ReadSetting(name), value) << name;
    EXPECT_TRUE(dialog.IsShown());
}

TEST_F(Settings, WhatTheUserChangesIsStoredByOkAndDroppedByCancel) {
    Open();
    user.Press({"Check1", 0});
    user.PressEscape();
    EXPECT_FALSE(dialog.IsShown());
    EXPECT_EQ(modRegistry::ReadSetting("onstartup"), "1");
    Open();
    EXPECT_EQ(dialog.Value({"Check1", 0}), 1) << "cancelled changes are gone when the window opens again";
    user.Press({"Check1", 0});
    user.Choose("SSTab1", 1);
    user.Press({"Option2", 0});
    user.Type("Text1", "E:\\x");
    form.Start(false);  // opened again from the menu: keeps the changes
    user.PressEnter("Text1");
    EXPECT_FALSE(dialog.IsShown());
    EXPECT_EQ(modRegistry::ReadSetting("onstartup"), "0");
    EXPECT_EQ(modRegistry::ReadSetting("loghowtxt"), "True");
    EXPECT_EQ(modRegistry::ReadSetting("loghowhtm"), "False");
    EXPECT_EQ(modRegistry::ReadSetting("logwhere"), "E:\\x");
    EXPECT_EQ(RunEntry(), "");
}

TEST_F(Settings, ThePercentageFollowsTheSlider) {
    modRegistry::WriteSetting("transamount", "250");
    Open(kTranslucencyPage);
    EXPECT_EQ(dialog.Text("lblPercent"), "100%");
    user.Choose("sldTrans", 42);
    EXPECT_EQ(dialog.Text("lblPercent"), "42%");
    EXPECT_FALSE(user.Sees("lblNoTrans"));
    os::fake::SetCanMakeTranslucent(false);
    user.Choose("SSTab1", 0);
    user.Choose("SSTab1", kTranslucencyPage);
    EXPECT_TRUE(user.Sees("lblNoTrans"));
    EXPECT_FALSE(user.Sees("sldTrans"));
    EXPECT_FALSE(user.Sees({"chkTrans", 3}));
}

TEST_F(Settings, ApplyPutsTranslucencyInForceEvenWhenAHotkeyFails) {
    const auto window = os::fake::OpenTopWindow("x - Instant Message");
    os::fake::TopWindowAt(window).alpha = 9;
    os::fake::TakeCombination(os::HotkeyModifier::Ctrl, 'A', "Taken.\r\n");
    Open(kHotkeysPage);
    user.Press("chkHotkey");
    AddHotkey("Ctrl", "(none)", "A", kBack, nullptr);
    user.Press("cmdApply");
    EXPECT_EQ(OnlyBox(),
              "These hotkeys could not be registered:\r\nCtrl+A: Failed to Register Hot Key [Taken.]");
    EXPECT_FALSE(os::fake::TopWindowAt(window).alpha.has_value());
}

TEST_F(Settings, AddingAHotkeyChecksInOrder) {
    Open(kHotkeysPage);
    user.Press("cmdHKAdd");  // as the lists stand: "(none)" twice and no text
    EXPECT_EQ(OnlyBox(), "Invalid selection for the optional key: (none) not allowed twice.");
    AddHotkey("Ctrl", "Ctrl", "A", kAway, nullptr);
    EXPECT_EQ(OnlyBox(), "Invalid selection for the optional key: Ctrl not allowed twice.");
    AddHotkey("Ctrl", "(none)", "A", kAway, "");
    EXPECT_EQ(OnlyBox(), "Additional text input required for this action.");
    AddHotkey("Ctrl", "Alt", "Page Down", kAway, "lunch");
    AddHotkey("Ctrl", "Alt", "Page Down", kPanic, nullptr);
    EXPECT_EQ(OnlyBox(), "A hotkey already exists with that key combination.");
    AddHotkey("(none)", "Win", "F12", kPanic, nullptr);
    EXPECT_EQ(OnlyBox(), "0 boxes");
    ASSERT_EQ(dialog.RowCount("lvHotkeys"), 2);
    EXPECT_EQ(dialog.Cell("lvHotkeys", 0, 0), "Ctrl+Alt+Page Down");
    EXPECT_EQ(dialog.Cell("lvHotkeys", 0, 1), "Set Away");
    EXPECT_EQ(dialog.Cell("lvHotkeys", 0, 2), "lunch");
    EXPECT_EQ(dialog.Cell("lvHotkeys", 1, 0), "Win+F12");
    EXPECT_EQ(dialog.Cell("lvHotkeys", 1, 2), "");
}

TEST_F(Settings, TheTextBoxIsOpenOnlyForActionsThatNeedIt) {
    Open(kHotkeysPage);
    EXPECT_TRUE(dialog.IsEnabled("txtHKText"));
    ChooseText("cmbHKAction", kBack);
    EXPECT_FALSE(dialog.IsEnabled("txtHKText"));
    EXPECT_EQ(dialog.Text("txtHKText"), "Additional text input not required for selected action.");
    ChooseText("cmbHKAction", kAway);
    EXPECT_TRUE(dialog.IsEnabled("txtHKText"));
    EXPECT_EQ(dialog.Text("txtHKText"), "") << "the notice is no away message";
}

TEST_F(Settings, HotkeysAreStoredRegisteredAndReadBack) {
    Open(kHotkeysPage);
    user.Press("chkHotkey");
    AddHotkey("Ctrl", "Alt", "Print Screen", kAway, "lunch");
    AddHotkey("Shift", "(none)", "Num Lock", kBack, nullptr);
    EXPECT_EQ(Hotkey("n"), "0") << "nothing is stored before Apply";
    user.Press("cmdApply");
    EXPECT_EQ(Hotkey("n") + Hotkey("1n") + "/" + Hotkey("1nt") + "/" + Hotkey("1na"),
              "2Ctrl+Alt+Print Screen/Set Away/lunch");
    EXPECT_EQ(Hotkey("2n") + "/" + Hotkey("2nt"), "Shift+Num Lock/Clear Away");
    EXPECT_EQ(Held(), "3/42 4/144 ");
    user.Press("cmdApply");
    EXPECT_EQ(Held(), "3/42 4/144 ") << "each Apply begins anew";

    user.Press("cmdCancel");
    Open(kHotkeysPage);
    ASSERT_EQ(dialog.RowCount("lvHotkeys"), 2);
    EXPECT_EQ(dialog.Cell("lvHotkeys", 0, 2), "lunch");
    user.Press("cmdDeleteHotkey");  // nothing is selected
    EXPECT_EQ(dialog.RowCount("lvHotkeys"), 2);
    user.SelectRows("lvHotkeys", {0});
    user.Press("cmdDeleteHotkey");
    user.Press("chkHotkey");
    user.Press("cmdApply");
    EXPECT_EQ(Held(), "") << "switched off";
    EXPECT_EQ(Hotkey("n") + Hotkey("1n"), "1Shift+Num Lock") << "but the list stays";
}

TEST_F(Settings, EveryHotkeyIsTriedAndEachFailureNamed) {
    os::fake::TakeCombination(2, 'B', "Hot key is already registered.\r\n");
    Open(kHotkeysPage);
    user.Press("chkHotkey");
    AddHotkey("Ctrl", "(none)", "A", kAway, "one");
    AddHotkey("Ctrl", "(none)", "B", kPanic, nullptr);
    AddHotkey("Ctrl", "(none)", "C", kAway, "two");
    AddHotkey("Ctrl", "(none)", "D", kBack, nullptr);
    user.Press("cmdOK");
    const std::string text =
        "These hotkeys could not be registered:\r\n"
        "Ctrl+B: Failed to Register Hot Key [Hot key is already registered.]\r\n"
        "Ctrl+C: The Key Name 'Set Away' is already registered.";
    EXPECT_EQ(OnlyBox(), text);
    EXPECT_EQ(Held(), "2/65 2/68 ");

    hotKeys.Clear();
    form.Start(true);  // the next start of the program
    EXPECT_EQ(reported, "frmSettings:Apply -2147220453 " + text + ";");
    EXPECT_EQ(OnlyBox(), "0 boxes");
    EXPECT_EQ(Held(), "2/65 2/68 ");
}

TEST_F(Settings, ADamagedListOfHotkeysIsTakenAsFarAsItGoes) {
    const auto store = [](const char* name, const char* data) {
        modRegistry::SetValue(os::RegistryHive::CurrentUser, kHotkeysKey, name, data,
                              os::RegistryType::String);
    };
    store("n", "2000000000");
    store("1n", "Hyper+Ctrl+Nothing");
    store("1nt", "Close IMs");
    modRegistry::WriteSetting("enablehotkey", "1");
    form.Start(true);
    EXPECT_EQ(dialog.RowCount("lvHotkeys"), 1);
    EXPECT_EQ(Held(), "2/0 ") << "unknown pieces count as 0";
    for (const char* count : {"x", "-3"}) {
        store("n", count);
        form.Start(true);
        EXPECT_EQ(dialog.RowCount("lvHotkeys"), 0) << count;
    }
}

TEST_F(Settings, TheButtonsReachTheAimSetUpAndTheUpdateCheck) {
    Open();
    user.Press("cmdUpdates");
    ASSERT_EQ(os::fake::ShownBoxes().size(), 1u);
    EXPECT_EQ(os::fake::ShownBoxes()[0].text, "This build of Wrenlow has no update server.");
    const auto isOn = [] {
        const auto proxy = "software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";
        return modRegistry::QueryValue(os::RegistryHive::CurrentUser, proxy, "Enabled") == "1";
    };
    user.Press({"cmdChange", 1});
    EXPECT_TRUE(isOn());
    user.Press({"cmdChange", 0});
    EXPECT_FALSE(isOn());
}

TEST(HotKeyNames, StandInTheirOrderWithTheirCodes) {
    frmSettings form;
    os::Dialog& dialog = form.Window();
    const os::ControlId combo("cmbHK", 0);
    const auto entries = [&](modHotKeys::KeyKind kind, bool addNone) {
        modHotKeys::FillKeyCombo(dialog, combo, kind, addNone);
        std::string text;
        for (int i = 0; i < dialog.EntryCount(combo); ++i) {
            const auto name = dialog.Entry(combo, i);
            text += name + "=" + std::to_string(modHotKeys::KeyCodeOf(name, kind)) + " ";
        }
        return text;
    };
    EXPECT_EQ(entries(modHotKeys::KeyKind::Modifier, true), "(none)=0 Alt=1 Ctrl=2 Shift=4 Win=8 ");
    const auto keys = entries(modHotKeys::KeyKind::Key, false);
    EXPECT_TRUE(
        keys.starts_with("Backspace=8 Tab=9 Enter=13 Caps Lock=20 Esc=27 Spacebar=32 Page Up=33 "
                         "Page Down=34 End=35 Home=36 Left Arrow=37 Up Arrow=38 Right Arrow=39 "
                         "Down Arrow=40 Print Screen=42 Ins=45 Del=46 Num Lock=144 A=65 B=66 "))
        << keys;
    EXPECT_TRUE(
        keys.ends_with("Z=90 0=48 1=49 2=50 3=51 4=52 5=53 6=54 7=55 8=56 9=57 F1=112 F2=113 F3=114 "
                       "F4=115 F5=116 F6=117 F7=118 F8=119 F9=120 F10=121 F11=122 F12=123 "))
        << keys;
    EXPECT_EQ(dialog.Value(combo), 0);
    EXPECT_EQ(modHotKeys::KeyCodeOf("Alt", modHotKeys::KeyKind::Key), 0u);
    EXPECT_EQ(modHotKeys::KeyCodeOf("a", modHotKeys::KeyKind::Key), 0u);
}

}  // namespace
