#include "desktop/frmSettings.h"

#include <string>

#include "app/services/SharedForm.h"
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "base/Trap.h"
#include "desktop/frmUpdate.h"
#include "desktop/modTrans.h"
#include "os/Files.h"
#include "os/MessageBox.h"
#include "os/TopWindows.h"

namespace {

using Kind = os::ControlKind;

enum Page { kStartup, kLogging, kOther, kTranslucency, kHotkeys };

constexpr short kRow = 14;  // from one check box to the next
constexpr const char* kNoTextNeeded = "Additional text input not required for selected action.";
constexpr os::DialogRect Line(short line, short left = 8) {
    return {left, static_cast<short>(8 + line * kRow), static_cast<short>(356 - left), 10};
}

// Column "initial" holds the default that is stored when the setting is missing.
constexpr os::Control kControls[] = {
    {Kind::TabStrip, "SSTab1", "Startup|Logging|Other|Translucency|Hotkeys", {7, 7, 368, 196}},

    {Kind::CheckBox, "Check1", "Start Wrenlow when Windows starts", Line(0), 0, kStartup, "onstartup", "1"},
    {Kind::CheckBox, "Check1",
     "Set up AIM's connection preferences automatically when Wrenlow starts if not already done so.", Line(1),
     1, kStartup, "setupaim", "1"},
    {Kind::CheckBox, "Check1", "Change AIM preferences back automatically when closing Wrenlow", Line(2), 2,
     kStartup, "revertsettings", "0"},
    {Kind::CheckBox, "Check1", "Check for updates when loading Wrenlow", Line(3), 3, kStartup, "checkupdate",
     "1"},
    {Kind::Button, "cmdChange", "Change settings to use Wrenlow", {8, 76, 130, 14}, 1, kStartup},
    {Kind::Button, "cmdChange", "Change settings back", {8, 94, 130, 14}, 0, kStartup},
    {Kind::Button, "cmdUpdates", "Check for updates now", {8, 112, 130, 14}, 0, kStartup},

    {Kind::CheckBox, "Check14", "Log IMs", Line(0), 0, kLogging, "logims", "0"},
    {Kind::Label, "lblLogWhere", "Logging Folder", {8, 26, 60, 8}, 0, kLogging},
    {Kind::TextBox, "Text1", "", {70, 24, 282, 12}, 0, kLogging, "logwhere", "C:\\AimLogs\\"},
    {Kind::CheckBox,
     "Check3",
     "Put each screenname in its own folder",
     {8, 42, 348, 10},
     0,
     kLogging,
     "logfolder",
     "0"},
    {Kind::OptionButton,
     "Option1",
     "By screenname by date (Bob 02/11/2002, Joe 12/31/1999)",
     {8, 60, 348, 10},
     0,
     kLogging,
     "logwhat",
     "True"},
    {Kind::OptionButton,
     "Option2",
     "Plaintext (.txt) - smaller files, but no colors",
     {8, 80, 348, 10},
     0,
     kLogging,
     "loghowtxt",
     "False"},
    {Kind::OptionButton,
     "Option2",
     "HTML (.htm) - larger files, with colors.",
     {8, 94, 348, 10},
     1,
     kLogging,
     "loghowhtm",
     "True"},

    {Kind::CheckBox, "Check2", "See profile HTML", Line(0), 0, kOther, "seehtml", "0"},

    {Kind::Label,
     "lblTrans",
     "Check the windows that you want to be translucent, and slide the slider to the percent translucency.",
     {8, 8, 348, 16},
     0,
     kTranslucency},
    {Kind::CheckBox, "chkTrans", "Instant Messages", {8, 30, 150, 10}, 0, kTranslucency, "trans1", "0"},
    {Kind::CheckBox, "chkTrans", "Buddy List", {8, 44, 150, 10}, 2, kTranslucency, "trans3", "0"},
    {Kind::CheckBox, "chkTrans", "Buddy Info", {170, 30, 150, 10}, 1, kTranslucency, "trans2", "0"},
    {Kind::CheckBox, "chkTrans", "Chat Rooms", {170, 44, 150, 10}, 3, kTranslucency, "trans4", "0"},
    {Kind::Label,
     "lblTransRange",
     "0% is completely opaque. 100% is completely translucent.",
     {8, 64, 348, 8},
     0,
     kTranslucency},
    {Kind::Slider, "sldTrans", "", {4, 78, 280, 16}, 0, kTranslucency, "transamount", "30"},
    {Kind::Label, "lblPercent", "30%", {290, 81, 40, 8}, 0, kTranslucency},
    {Kind::Label,
     "lblNoTrans",
     "Your operating system does not support translucency. (Win 2000/XP/2003 only)",
     {8, 8, 348, 16},
     0,
     kTranslucency},

    {Kind::CheckBox, "chkHotkey", "Enable hotkeys", {8, 6, 150, 10}, 0, kHotkeys, "enablehotkey", "0"},
    {Kind::ListView, "lvHotkeys", "", {8, 20, 348, 62}, 0, kHotkeys},
    {Kind::Button, "cmdDeleteHotkey", "Remove Selected", {276, 85, 80, 14}, 0, kHotkeys},
    {Kind::GroupFrame, "fraAddHotkey", "Add Hotkey", {8, 100, 348, 72}, 0, kHotkeys},
    {Kind::DropDownList, "cmbHK", "", {16, 112, 56, 12}, 0, kHotkeys},
    {Kind::Label, "lblHK", "+ (optional)", {75, 114, 42, 8}, 0, kHotkeys},
    {Kind::DropDownList, "cmbHK", "", {120, 112, 56, 12}, 1, kHotkeys},
    {Kind::Label, "lblHK", "+ (optional)", {179, 114, 42, 8}, 1, kHotkeys},
    {Kind::DropDownList, "cmbHK", "", {224, 112, 124, 12}, 2, kHotkeys},
    {Kind::Label, "lblHKAction", "Action:", {16, 132, 40, 8}, 0, kHotkeys},
    {Kind::DropDownList, "cmbHKAction", "", {60, 130, 288, 12}, 0, kHotkeys},
    {Kind::Label, "lblHKText", "Text:", {16, 152, 40, 8}, 0, kHotkeys},
    {Kind::TextBox, "txtHKText", "", {60, 150, 222, 12}, 0, kHotkeys},
    {Kind::Button, "cmdHKAdd", "Add", {288, 149, 60, 14}, 0, kHotkeys},

    {Kind::DefaultButton, "cmdOK", "OK", {213, 208, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {269, 208, 50, 14}},
    {Kind::Button, "cmdApply", "Apply", {325, 208, 50, 14}},
};
constexpr os::DialogTable kTable{"Settings", 382, 229, kControls};

constexpr const char* kRunKey = "software\\microsoft\\windows\\CurrentVersion\\run";
constexpr const char* kRunValue = "Wrenlow";

// A stored value of 1,024 bytes or more cannot be read back.
constexpr std::size_t kLongestText = 1000;
constexpr std::size_t kLongestPath = 240;  // room for the names of logs below MAX_PATH

bool IsBound(const os::Control& row) {
    return *row.tag != '\0';
}

os::ControlId IdOf(const os::Control& row) {
    return {std::string_view(row.name), row.index};
}

// What is stored for the control's present state.
std::string StoredForm(const os::Dialog& dialog, const os::Control& row) {
    if (row.kind == Kind::TextBox) return dialog.Text(IdOf(row));
    const int value = dialog.Value(IdOf(row));
    if (row.kind == Kind::OptionButton) return value != 0 ? "True" : "False";
    return std::to_string(value);
}

void PutStored(os::Dialog& dialog, const os::Control& row, const std::string& stored) {
    if (row.kind == Kind::TextBox) {
        dialog.SetText(IdOf(row), stored);
    } else if (row.kind == Kind::Slider) {
        dialog.SetValue(IdOf(row), modTrans::ParseAmount(stored));
    } else {
        dialog.SetValue(IdOf(row), stored == "1" || stored == "True");
    }
}

void ApplyRunEntry() {
    const auto hive = os::RegistryHive::CurrentUser;
    if (modRegistry::ReadSetting("onstartup") == "0") {
        modRegistry::DeleteValue(hive, kRunKey, kRunValue);
        return;
    }
    const auto program = os::ProgramFolder() + "\\" + os::ProgramBaseName() + ".exe";
    modRegistry::SetValue(hive, kRunKey, kRunValue, program, os::RegistryType::String);
}

void TellFault(const std::string& text) {
    os::ShowMessageBox(text, os::kApplicationTitle, os::BoxIcon::Error);
}

}  // namespace

frmSettings::frmSettings() : dialog_(kTable) {
    dialog_.LimitText("Text1", kLongestPath);
    dialog_.LimitText("txtHKText", kLongestText);
    dialog_.AddColumn("lvHotkeys", "Hotkey", 100);
    dialog_.AddColumn("lvHotkeys", "Action", 70);
    dialog_.AddColumn("lvHotkeys", "Text", 170);

    dialog_.On("cmdOK", [this] { cmdOK_Click(); });
    dialog_.On("cmdApply", [this] { cmdApply_Click(); });
    dialog_.On({"cmdChange", 0}, [] { modSystem::RevertSettings(true); });
    dialog_.On({"cmdChange", 1}, [] { modSystem::SetupAim(true); });
    dialog_.On("cmdUpdates", [] { SharedForm<frmUpdate>().CheckForUpdate(true); });
    dialog_.On("SSTab1", [this] { SSTab1_Click(); });
    dialog_.On("sldTrans", [this] { sldTrans_Change(); });
    dialog_.On("cmbHKAction", [this] { cmbHKAction_Click(); });
    dialog_.On("cmdHKAdd", [this] { cmdHKAdd_Click(); });
    dialog_.On("cmdDeleteHotkey", [this] { cmdDeleteHotkey_Click(); });
}

void frmSettings::Start(bool bDontShow) {
    if (bDontShow) {
        Load();
        Trap("frmSettings:Apply", [this] {
            if (const auto failure = Apply()) throw RuntimeError(*failure);
        });
        return;
    }
    if (!dialog_.IsShown()) {
        Load();
        dialog_.SetValue("SSTab1", kStartup);
    }
    dialog_.Show();
}

void frmSettings::Load() {
    for (const auto& row : kControls) {
        if (!IsBound(row)) continue;
        auto stored = modRegistry::ReadSetting(row.tag);
        if (stored.empty()) {
            stored = row.initial;
            modRegistry::WriteSetting(row.tag, stored);
        }
        PutStored(dialog_, row, stored);
    }
    sldTrans_Change();
    dialog_.ClearRows("lvHotkeys");
    for (const auto& hotkey : modHotKeys::LoadHotkeys()) {
        dialog_.AddRow("lvHotkeys", {hotkey.combination, hotkey.action, hotkey.text});
    }
}

void frmSettings::Save() {
    for (const auto& row : kControls) {
        if (IsBound(row)) modRegistry::WriteSetting(row.tag, StoredForm(dialog_, row));
    }
    modHotKeys::SaveHotkeys(HotkeyRows());
}

// What comes back names the hotkeys that could not be registered; everything else is in force all the same.
std::optional<RuntimeError> frmSettings::Apply() {
    ApplyRunEntry();
    auto failure = modHotKeys::RegisterHotkeys(HotkeyRows(), dialog_.Value("chkHotkey") != 0);
    modTrans::LoadTransSettings();
    return failure;
}

void frmSettings::ApplyOrTell() {
    if (const auto failure = Apply()) TellFault(failure->what());
}

void frmSettings::cmdOK_Click() {
    Save();
    dialog_.Close();
    ApplyOrTell();
}

void frmSettings::cmdApply_Click() {
    Save();
    ApplyOrTell();
}

void frmSettings::SSTab1_Click() {
    const int page = dialog_.Value("SSTab1");
    if (page == kTranslucency) ShowTranslucencyPage();
    if (page == kHotkeys) FillHotkeyLists();
}

void frmSettings::ShowTranslucencyPage() {
    const bool can = os::CanMakeTranslucent();
    for (const auto& row : kControls) {
        if (row.page == kTranslucency) dialog_.ShowControl(IdOf(row), can);
    }
    dialog_.ShowControl("lblNoTrans", !can);
}

void frmSettings::FillHotkeyLists() {
    modHotKeys::FillKeyCombo(dialog_, {"cmbHK", 0}, modHotKeys::KeyKind::Modifier, true);
    modHotKeys::FillKeyCombo(dialog_, {"cmbHK", 1}, modHotKeys::KeyKind::Modifier, true);
    modHotKeys::FillKeyCombo(dialog_, {"cmbHK", 2}, modHotKeys::KeyKind::Key, false);
    modHotKeys::FillActionCombo(dialog_, "cmbHKAction");
    cmbHKAction_Click();
}

void frmSettings::sldTrans_Change() {
    dialog_.SetText("lblPercent", std::to_string(dialog_.Value("sldTrans")) + "%");
}

void frmSettings::cmbHKAction_Click() {
    const bool needsText = modHotKeys::ActionNeedsText(dialog_.Text("cmbHKAction"));
    if (needsText && dialog_.Text("txtHKText") == kNoTextNeeded) dialog_.SetText("txtHKText", "");
    if (!needsText) dialog_.SetText("txtHKText", kNoTextNeeded);
    dialog_.Enable("txtHKText", needsText);
}

void frmSettings::cmdHKAdd_Click() {
    const auto first = dialog_.Text({"cmbHK", 0});
    const auto second = dialog_.Text({"cmbHK", 1});
    // "(none)" twice is refused like any other entry, so every hotkey has a modifier.
    if (first == second) {
        return TellFault("Invalid selection for the optional key: " + first + " not allowed twice.");
    }
    const bool needsText = dialog_.IsEnabled("txtHKText");
    const auto text = needsText ? dialog_.Text("txtHKText") : std::string();
    if (needsText && text.empty()) return TellFault("Additional text input required for this action.");

    std::string combination;
    for (const auto& modifier : {first, second}) {
        if (modifier != "(none)") combination += modifier + "+";
    }
    combination += dialog_.Text({"cmbHK", 2});
    if (HasHotkeyRow(combination)) return TellFault("A hotkey already exists with that key combination.");
    dialog_.AddRow("lvHotkeys", {combination, modHotKeys::ActionNameOf(dialog_.Text("cmbHKAction")), text});
}

void frmSettings::cmdDeleteHotkey_Click() {
    for (int row = dialog_.RowCount("lvHotkeys") - 1; row >= 0; --row) {
        if (dialog_.IsRowSelected("lvHotkeys", row)) dialog_.RemoveRow("lvHotkeys", row);
    }
}

bool frmSettings::HasHotkeyRow(const std::string& combination) const {
    for (const auto& hotkey : HotkeyRows()) {
        if (hotkey.combination == combination) return true;
    }
    return false;
}

std::vector<modHotKeys::StoredHotkey> frmSettings::HotkeyRows() const {
    std::vector<modHotKeys::StoredHotkey> rows;
    for (int row = 0; row < dialog_.RowCount("lvHotkeys"); ++row) {
        rows.push_back({dialog_.Cell("lvHotkeys", row, 0), dialog_.Cell("lvHotkeys", row, 1),
                        dialog_.Cell("lvHotkeys", row, 2)});
    }
    return rows;
}
