#include "desktop/frmSettings.h"

#include <map>

#include "app/services/Settings.h"
#include "app/services/modRegistry.h"
#include "desktop/ApplySettings.h"
#include "desktop/frmUpdate.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeHotkeys.h"
#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeTopWindows.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Reported.h"

namespace {

using os::fake::DialogUser;
using Values = std::map<std::string, std::string>;

constexpr auto kHive = os::RegistryHive::CurrentUser;
constexpr os::WindowHandle kMainWindow = 0x77;
constexpr const char* kHotkeysKey = "software\\Wrenlow\\hotkeys\\";
constexpr int kTranslucencyPage = 3;
constexpr int kHotkeysPage = 4;
constexpr int kServerPage = 5;
constexpr const char* kAway = "Set away message";
constexpr const char* kBack = "Clear away message";
constexpr const char* kPanic = "Panic! (Shut down AIM and Wrenlow)";

struct Settings : FreshWorld {
    Settings() { modHotKeys::InitHotKeys(hotKeys, kMainWindow); }
    ~Settings() override { modHotKeys::ReleaseHotKeys(); }

    void Open(int page = 0) {
        form.Start();
        if (page != 0) user.Choose("SSTab1", page);
    }

    void ChooseText(os::ControlId list, const std::string& entry) {
        for (int i = 0; i < dialog.EntryCount(list); ++i) {
            if (dialog.Entry(list, i) == entry) return user.Choose(list, i);
        }
        FAIL() << "no entry " << entry;
    }

    // Types the text only if there is one to be typed.
    void AddHotkey(const char* first, const char* second, const char* key, const char* action,
                   std::optional<std::string> text = {}) {
        ChooseText({"cmbHK", 0}, first);
        ChooseText({"cmbHK", 1}, second);
        ChooseText({"cmbHK", 2}, key);
        ChooseText("cmbHKAction", action);
        if (text) user.Type("txtHKText", *text);
        user.Press("cmdHKAdd");
    }

    // The list as the window shows it.
    Texts Rows() { return FreshWorld::Rows(dialog, "lvHotkeys", 3); }

    static std::string Hotkey(const std::string& name) {
        return modRegistry::QueryValue(kHive, kHotkeysKey, name);
    }
    static std::string RunEntry() {
        return modRegistry::QueryValue(kHive, "software\\microsoft\\windows\\CurrentVersion\\run", "Wrenlow");
    }

    // The combinations that the system holds for us, as modifiers/key.
    static std::string Held() {
        std::string held;
        for (const auto& hotkey : os::fake::hotkeys.held)
            held += std::to_string(hotkey.modifiers) + "/" + std::to_string(hotkey.key) + " ";
        return held;
    }

    static void ExpectStored(const Values& values) {
        for (const auto& [name, value] : values) EXPECT_EQ(modRegistry::ReadSetting(name), value) << name;
    }

    Reported reported;
    cRegHotKey hotKeys;
    frmSettings form;
    os::Dialog& dialog = form.Window();
    DialogUser user{dialog};
};

const Values kDefaults = {
    {"checkupdate", "1"},  {"setupaim", "1"},     {"revertsettings", "0"}, {"onstartup", "1"},
    {"enablehotkey", "0"}, {"trans1", "0"},       {"trans2", "0"},         {"trans3", "0"},
    {"trans4", "0"},       {"transamount", "30"}, {"logims", "0"},         {"logwhere", "C:\\AimLogs\\"},
    {"logfolder", "0"},    {"logwhat", "True"},   {"loghowtxt", "False"},  {"loghowhtm", "True"},
    {"logchat", "0"},      {"seehtml", "0"},      {"keepmessages", "0"},   {"fetchmessages", "1"},
};

TEST_F(Settings, AnEmptyStoreGetsEveryDefaultOnceAndIsPutInForce) {
    StartSettings();
    ExpectStored(kDefaults);
    EXPECT_EQ(Hotkey("n"), "0");
    EXPECT_EQ(RunEntry(), "/program/wrenlow.exe");
    EXPECT_EQ(os::fake::registry.changes, std::ssize(settings::kTable) + 1 + 1);
    StartSettings();
    EXPECT_EQ(os::fake::registry.changes, std::ssize(settings::kTable) + 1 + 1 + 1)
        << "only the Run entry is written each time";
}

TEST_F(Settings, EveryControlLoadsAndSavesTheSettingOfItsTag) {
    Values others = kDefaults;
    for (auto& [name, value] : others) {
        if (value.size() == 1) value = value == "0" ? "1" : "0";
        if (value.ends_with("e")) value = value == "True" ? "False" : "True";
    }
    others["transamount"] = "77";
    others["logwhere"] = "D:\\Logs\\";
    others["server"] = "aim.example.org:5190";
    os::fake::PutFile("D:\\file", "");
    for (const auto& [name, value] : others) modRegistry::WriteSetting(name, value);
    Open();
    os::fake::registry = {};
    user.Press("cmdApply");
    ExpectStored(others);
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
    form.Start();  // opened again from the menu: keeps the changes
    user.PressEnter("Text1");
    EXPECT_FALSE(dialog.IsShown());
    ExpectStored({{"onstartup", "0"}, {"loghowtxt", "True"}, {"loghowhtm", "False"}, {"logwhere", "E:\\x"}});
    EXPECT_EQ(RunEntry(), "");
}

TEST_F(Settings, ThePercentageFollowsTheSliderWhereTheSystemIsTranslucent) {
    modRegistry::WriteSetting("transamount", "250");
    Open(kTranslucencyPage);
    EXPECT_EQ(dialog.Text("lblPercent"), "100%");
    user.Choose("sldTrans", 42);
    EXPECT_EQ(dialog.Text("lblPercent"), "42%");
    EXPECT_FALSE(user.Sees("lblNoTrans"));
    os::fake::topWindows.canMakeTranslucent = false;
    user.Choose("SSTab1", 0);
    user.Choose("SSTab1", kTranslucencyPage);
    EXPECT_TRUE(user.Sees("lblNoTrans"));
    EXPECT_FALSE(user.Sees("sldTrans") || user.Sees({"chkTrans", 3}));
}

TEST_F(Settings, AddingAHotkeyChecksInOrder) {
    const struct {
        const char *first, *second, *key, *action;
        std::optional<std::string> text;
        std::string refusal = "";
    } cases[] = {
        {"(none)", "(none)", "A", kAway, "",
         "Invalid selection for the optional key: (none) not allowed twice."},
        {"Ctrl", "Ctrl", "A", kAway, "", "Invalid selection for the optional key: Ctrl not allowed twice."},
        {"Ctrl", "(none)", "A", kAway, "", "Additional text input required for this action."},
        {"Ctrl", "Alt", "Page Down", kAway, "lunch"},
        {"Ctrl", "Alt", "Page Down", kPanic, {}, "A hotkey already exists with that key combination."},
        {"(none)", "Win", "F12", kPanic, {}},
        {"Ctrl", "(none)", "B", kAway, "again",
         "The action \"Set Away\" has the hotkey Ctrl+Alt+Page Down already. Remove that one first."},
    };
    Open(kHotkeysPage);
    for (const auto& [first, second, key, action, text, refusal] : cases) {
        AddHotkey(first, second, key, action, text);
        for (const auto& box : os::fake::boxes.shown) EXPECT_EQ(box.icon, os::BoxIcon::Error);
        EXPECT_EQ(TakeBoxes(), refusal.empty() ? Texts() : Texts{refusal});
    }
    EXPECT_EQ(Rows(), (Texts{"Ctrl+Alt+Page Down|Set Away|lunch", "Win+F12|Panic!|"}));
}

TEST_F(Settings, TheTextBoxIsOpenOnlyForActionsThatNeedIt) {
    Open(kHotkeysPage);
    const std::tuple<const char*, bool, std::string> cases[] = {
        {kAway, true, ""},
        {kBack, false, "Additional text input not required for selected action."},
        {kAway, true, ""},  // the notice is no away message
    };
    for (const auto& [action, open, text] : cases) {
        ChooseText("cmbHKAction", action);
        EXPECT_EQ(dialog.IsEnabled("txtHKText"), open);
        EXPECT_EQ(dialog.Text("txtHKText"), text);
    }
}

TEST_F(Settings, HotkeysAreStoredRegisteredAndReadBack) {
    Open(kHotkeysPage);
    user.Press("chkHotkey");
    AddHotkey("Ctrl", "Alt", "Print Screen", kAway, "lunch");
    AddHotkey("Shift", "(none)", "Num Lock", kBack);
    EXPECT_EQ(Hotkey("n"), "0") << "nothing is stored before Apply";
    for (int time = 0; time < 2; ++time) {
        user.Press("cmdApply");
        EXPECT_EQ(Held(), "3/42 4/144 ") << "each Apply begins anew";
    }
    EXPECT_EQ(Hotkey("n") + Hotkey("1n") + "/" + Hotkey("1nt") + "/" + Hotkey("1na"),
              "2Ctrl+Alt+Print Screen/Set Away/lunch");
    EXPECT_EQ(Hotkey("2n") + "/" + Hotkey("2nt"), "Shift+Num Lock/Clear Away");

    user.Press("cmdCancel");
    Open(kHotkeysPage);
    user.Press("cmdDeleteHotkey");  // nothing is selected
    EXPECT_EQ(Rows(), (Texts{"Ctrl+Alt+Print Screen|Set Away|lunch", "Shift+Num Lock|Clear Away| "}));
    user.Choose("lvHotkeys", 0);
    user.Press("cmdDeleteHotkey");
    user.Press("chkHotkey");
    user.Press("cmdApply");
    EXPECT_EQ(Held(), "") << "switched off";
    EXPECT_EQ(Hotkey("n") + Hotkey("1n"), "1Shift+Num Lock") << "but the list stays";
}

TEST_F(Settings, EveryHotkeyIsTriedAndTheFirstFailuresAreNamed) {
    const auto window = os::fake::OpenTopWindow("x - Instant Message");
    os::fake::topWindows.open.at(window).alpha = 9;
    os::fake::hotkeys.takenByOthers[{2, 'B'}] = "Hot key is already registered.\r\n";
    std::vector<modHotKeys::StoredHotkey> stored{
        {"Ctrl+A", "Set Away", "one"}, {"Ctrl+B", "Panic!", ""}, {"Ctrl+D", "Clear Away", ""}};
    for (char key = 'E'; key <= 'J'; ++key)  // of an earlier version: Add refuses them
        stored.push_back({std::string("Ctrl+") + key, "Set Away", "two"});
    modHotKeys::SaveHotkeys(stored);
    Open(kHotkeysPage);
    user.Press("chkHotkey");
    user.Press("cmdOK");
    std::string text =
        "These hotkeys could not be registered:\r\n"
        "Ctrl+B: Failed to Register Hot Key [Hot key is already registered.]\r\n";
    for (const char* key : {"E", "F", "G", "H"})
        text += std::string("Ctrl+") + key + ": The Key Name 'Set Away' is already registered.\r\n";
    text += "and 2 more";
    EXPECT_EQ(TakeBoxes(), Texts{text});
    EXPECT_EQ(Held(), "2/65 2/68 ");
    EXPECT_FALSE(os::fake::topWindows.open.at(window).alpha) << "translucency is in force nevertheless";

    hotKeys.Clear();
    StartSettings();  // the next start of the program
    EXPECT_EQ(Reported::Lines(), Texts{"-2147220453: " + text});
    EXPECT_EQ(TakeBoxes(), Texts());
    EXPECT_EQ(Held(), "2/65 2/68 ");
}

TEST_F(Settings, EnterInTheHotkeysTextAddsIt) {
    Open(kHotkeysPage);
    ChooseText({"cmbHK", 0}, "Ctrl");
    ChooseText("cmbHKAction", kAway);
    user.Type("txtHKText", "lunch");
    user.PressEnter("txtHKText");
    EXPECT_TRUE(dialog.IsShown());
    EXPECT_EQ(dialog.RowCount("lvHotkeys"), 1);
    user.Choose("lvHotkeys", 0);
    user.PressDelete("lvHotkeys");
    EXPECT_EQ(dialog.RowCount("lvHotkeys"), 0);
}

TEST_F(Settings, ALogFolderThatCannotBeMadeOrNamedIsRefused) {
    os::fake::PutFile("E:\\file", "");
    os::fake::FailWrites("E:\\x", 5);
    Open(1);
    user.Press("Check14");
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { user.TypeBeyondCodePage("Text1"); }, "\" cannot be kept: its name has letters"},
        {[&] { user.Type("Text1", "E:\\x\\"); }, "The logging folder \"E:\\x\\\" cannot be made: "},
    };
    for (const auto& [type, why] : cases) {
        type();
        for (const char* button : {"cmdOK", "cmdApply"}) {
            user.Press(button);
            const auto boxes = TakeBoxes();
            ASSERT_EQ(boxes.size(), 1u);
            EXPECT_NE(boxes[0].find(why), boxes[0].npos) << boxes[0];
            EXPECT_TRUE(dialog.IsShown() && user.HasFocus("Text1"));
        }
    }
    EXPECT_EQ(modRegistry::ReadSetting("logims"), "0");
    EXPECT_EQ(modRegistry::ReadSetting("logwhere").find('?'), std::string::npos);
    os::fake::FailWrites("E:\\x", 0);
    user.Press("cmdOK");
    EXPECT_EQ(TakeBoxes(), Texts());
    EXPECT_EQ(modRegistry::ReadSetting("logims"), "1");
}

TEST_F(Settings, AServerWithAPortThatIsNoneIsRefused) {
    Open(kServerPage);
    EXPECT_EQ(dialog.Text("txtServer"), "") << "an empty text is stored as a blank";
    for (const char* text : {"host:", "host:0", "host:65536", "host:x", "my host"}) {
        user.Type("txtServer", text);
        user.Press("cmdOK");
        EXPECT_EQ(TakeBoxes().size(), 1u) << text;
        EXPECT_TRUE(dialog.IsShown() && user.HasFocus("txtServer")) << text;
    }
    for (const char* text : {"host", "host:5190", "10.0.0.1:99", "2001:db8::1", "[2001:db8::1]:5190", ""}) {
        user.Type("txtServer", text);
        user.Press("cmdApply");
        EXPECT_EQ(TakeBoxes(), Texts()) << text;
    }
}

TEST_F(Settings, ADamagedListOfHotkeysIsTakenAsFarAsItGoes) {
    modRegistry::WriteSetting("enablehotkey", "1");
    const auto store = [](const char* name, const char* data) {
        modRegistry::SetValue(kHive, kHotkeysKey, name, data, os::RegistryType::String);
    };
    store("1n", "Hyper+Ctrl+Nothing");  // unknown pieces count as 0
    store("1nt", "Close IMs");
    for (const auto& [count, rows, held] :
         {std::tuple{"2000000000", 1, "2/0 "}, {"x", 0, ""}, {"-3", 0, ""}}) {
        store("n", count);
        StartSettings();
        EXPECT_EQ(Held(), held) << count;
        Open();
        EXPECT_EQ(dialog.RowCount("lvHotkeys"), rows) << count;
        user.PressEscape();
    }
}

TEST_F(Settings, TheButtonsReachTheAimSetUpAndTheUpdateCheck) {
    Open();
    user.Press("cmdUpdates");
    EXPECT_EQ(TakeBoxes(), Texts{"This build of Wrenlow has no update server."});
    for (const auto& [button, enabled] : {std::pair{1, true}, {0, false}}) {
        user.Press({"cmdChange", button});
        const auto changes = os::fake::registry.changes;
        if (enabled) user.Press({"cmdChange", button});
        EXPECT_EQ(os::fake::registry.changes, changes) << "it is set up already";
        const auto proxy = "software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";
        EXPECT_EQ(modRegistry::QueryValue(kHive, proxy, "Enabled") == "1", enabled);
    }
}

TEST_F(Settings, KeysKeepTheirCodesAndPrintScreenIs42) {
    using enum modHotKeys::KeyKind;
    const std::tuple<const char*, modHotKeys::KeyKind, std::uint32_t> cases[] = {
        {"(none)", Modifier, 0},   {"Alt", Modifier, 1}, {"Ctrl", Modifier, 2}, {"Shift", Modifier, 4},
        {"Win", Modifier, 8},      {"Alt", Key, 0},      {"A", Key, 65},        {"a", Key, 0},
        {"Print Screen", Key, 42}, {"Esc", Key, 27},     {"F12", Key, 123},     {"0", Key, 48},
    };
    for (const auto& [name, kind, code] : cases) EXPECT_EQ(modHotKeys::KeyCodeOf(name, kind), code) << name;
}

}  // namespace
