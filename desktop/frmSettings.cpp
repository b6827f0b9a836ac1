#include "desktop/frmSettings.h"

#include <string>

#include "app/services/Settings.h"
#include "app/services/modRegistry.h"
#include "app/windows/AimClient.h"
#include "app/windows/SharedForm.h"
#include "base/Text.h"
#include "desktop/ApplySettings.h"
#include "desktop/frmUpdate.h"
#include "desktop/modTrans.h"
#include "os/Files.h"
#include "os/desktop/MessageBox.h"
#include "os/desktop/TopWindows.h"

namespace {

using Kind = os::ControlKind;

enum Page { kStartup, kLogging, kOther, kTranslucency, kHotkeys, kServer, kMessages };

constexpr short kRow = 14;  // from one check box to the next
constexpr const char* kNoTextNeeded = "Additional text input not required for selected action.";
constexpr os::DialogRect Line(short line, short left = 8) {
    return {left, static_cast<short>(8 + line * kRow), static_cast<short>(356 - left), 10};
}

// Column "tag" names the setting that the control is bound to; its default stands in the table of settings.
constexpr os::Control kControls[] = {
    {Kind::TabStrip,
     "SSTab1",
     "Startup|Logging|Other|Translucency|Hotkeys|Server|Messages",
     {7, 7, 368, 196}},

    {Kind::CheckBox, "Check1", "Start Wrenlow when Windows starts", Line(0), 0, kStartup, "onstartup"},
    {Kind::CheckBox, "Check1",
     "Set up AIM's connection preferences automatically when Wrenlow starts if not already done so.", Line(1),
     1, kStartup, "setupaim"},
    {Kind::CheckBox, "Check1", "Change AIM preferences back automatically when closing Wrenlow", Line(2), 2,
     kStartup, "revertsettings"},
    {Kind::CheckBox, "Check1", "Check for updates when loading Wrenlow", Line(3), 3, kStartup, "checkupdate"},
    {Kind::Button, "cmdChange", "Change settings to use Wrenlow", {8, 76, 130, 14}, 1, kStartup},
    {Kind::Button, "cmdChange", "Change settings back", {8, 94, 130, 14}, 0, kStartup},
    {Kind::Button, "cmdUpdates", "Check for updates now", {8, 112, 130, 14}, 0, kStartup},

    {Kind::CheckBox, "Check14", "Log IMs", Line(0), 0, kLogging, "logims"},
    {Kind::Label, "lblLogWhere", "Logging Folder", {8, 26, 60, 8}, 0, kLogging},
    {Kind::TextBox, "Text1", "", {70, 24, 282, 12}, 0, kLogging, "logwhere"},
    {Kind::CheckBox,
     "Check3",
     "Put each screenname in its own folder",
     {8, 42, 348, 10},
     0,
     kLogging,
     "logfolder"},
    {Kind::OptionButton,
     "Option1",
     "By screenname by date (Bob 02/11/2002, Joe 12/31/1999)",
     {8, 60, 348, 10},
     0,
     kLogging,
     "logwhat"},
    {Kind::OptionButton,
     "Option2",
     "Plaintext (.txt) - smaller files, but no colors",
     {8, 80, 348, 10},
     0,
     kLogging,
     "loghowtxt"},
    {Kind::OptionButton,
     "Option2",
     "HTML (.htm) - larger files, with colors.",
     {8, 94, 348, 10},
     1,
     kLogging,
     "loghowhtm"},
    {Kind::CheckBox, "chkChat", "Log chat rooms, too", {8, 112, 348, 10}, 0, kLogging, "logchat"},

    {Kind::CheckBox, "Check2", "See profile HTML", Line(0), 0, kOther, "seehtml"},

    {Kind::Label,
     "lblTrans",
     "Check the windows that you want to be translucent, and slide the slider to the percent translucency.",
     {8, 8, 348, 16},
     0,
     kTranslucency},
    {Kind::CheckBox, "chkTrans", "Instant Messages", {8, 30, 150, 10}, 0, kTranslucency, "trans1"},
    {Kind::CheckBox, "chkTrans", "Buddy List", {8, 44, 150, 10}, 2, kTranslucency, "trans3"},
    {Kind::CheckBox, "chkTrans", "Buddy Info", {170, 30, 150, 10}, 1, kTranslucency, "trans2"},
    {Kind::CheckBox, "chkTrans", "Chat Rooms", {170, 44, 150, 10}, 3, kTranslucency, "trans4"},
    {Kind::Label,
     "lblTransRange",
     "0% is completely opaque. 100% is completely translucent.",
     {8, 64, 348, 8},
     0,
     kTranslucency},
    {Kind::Slider, "sldTrans", "", {4, 78, 280, 16}, 0, kTranslucency, "transamount"},
    {Kind::Label, "lblPercent", "30%", {290, 81, 40, 8}, 0, kTranslucency},
    {Kind::Label,
     "lblNoTrans",
     "Your operating system does not support translucency. (Win 2000/XP/2003 only)",
     {8, 8, 348, 16},
     0,
     kTranslucency},

    {Kind::CheckBox, "chkHotkey", "Enable hotkeys", {8, 6, 150, 10}, 0, kHotkeys, "enablehotkey"},
    {Kind::UnseenLabel, "lblHotkeys", "Hotkeys", {}, 0, kHotkeys},
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

    {Kind::Label, "lblServer", "Server", {8, 10, 60, 8}, 0, kServer},
    {Kind::TextBox, "txtServer", "", {70, 8, 282, 12}, 0, kServer, "server"},
    {Kind::Label,
     "lblServerForm",
     "A name or an address, with \":\" and the port behind it if you like. Empty: AIM decides.",
     {70, 24, 282, 16},
     0,
     kServer},
    {Kind::CheckBox,
     "chkServer",
     "Use it for every connection",
     {8, 46, 348, 10},
     0,
     kServer,
     "server-always"},
    {Kind::CheckBox,
     "chkServer",
     "When the server sends AIM to an address that cannot be reached, use this server instead",
     {8, 60, 348, 10},
     1,
     kServer,
     "server-fallback"},

    {Kind::CheckBox, "chkMessages", "Keep messages for buddies who are off line", Line(0), 0, kMessages,
     "keepmessages"},
    {Kind::CheckBox, "chkMessages", "Fetch messages that wait for me at sign-on", Line(1), 1, kMessages,
     "fetchmessages"},

    {Kind::DefaultButton, "cmdOK", "OK", {213, 208, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {269, 208, 50, 14}},
    {Kind::Button, "cmdApply", "Apply", {325, 208, 50, 14}},
};
constexpr os::DialogTable kTable{"Settings", 382, 229, kControls};

constexpr std::size_t kMaxServer = 261;  // the longest name of the DNS, a colon and a port
constexpr std::size_t kMaxPath = 240;    // room for the names of logs below MAX_PATH

bool IsBound(const os::Control& row) {
    return *row.tag != '\0';
}

os::ControlId IdOf(const os::Control& row) {
    return {std::string_view(row.name), row.index};
}

// What is stored for the control's present state.
std::string StoredForm(const os::Dialog& dialog, const os::Control& row) {
    const auto& setting = *settings::Find(row.tag);
    if (row.kind == Kind::TextBox) return dialog.Text(IdOf(row));
    const int value = dialog.Value(IdOf(row));
    return settings::IsMark(setting.kind) ? settings::StoredMark(setting, value != 0) : std::to_string(value);
}

void PutStored(os::Dialog& dialog, const os::Control& row, const std::string& stored) {
    const auto& setting = *settings::Find(row.tag);
    if (row.kind == Kind::TextBox) {
        dialog.SetText(IdOf(row), std::string(Trim(stored)));  // an empty text is stored as a blank
    } else if (settings::IsMark(setting.kind)) {
        dialog.SetValue(IdOf(row), settings::MeansOn(setting, stored));
    } else {
        dialog.SetValue(IdOf(row), modTrans::ParseAmount(stored));
    }
}

void TellFault(const std::string& text) {
    os::ShowMessageBox(text, os::kApplicationTitle, os::BoxIcon::Error);
}

void ApplyOrTell() {
    if (const auto failure = ApplySettings()) TellFault(failure->what());
}

}  // namespace

frmSettings::frmSettings() : dialog_(kTable) {
    dialog_.LimitText("Text1", kMaxPath);
    dialog_.LimitText("txtServer", kMaxServer);
    dialog_.LimitText("txtHKText", settings::kMaxTextBytes);
    dialog_.AddColumn("lvHotkeys", "Hotkey", 100);
    dialog_.AddColumn("lvHotkeys", "Action", 70);
    dialog_.AddColumn("lvHotkeys", "Text", 160);  // and room for the bar that scrolls down

    dialog_.On("cmdOK", [this] { cmdOK_Click(); });
    dialog_.On("cmdApply", [this] { cmdApply_Click(); });
    dialog_.On({"cmdChange", 0}, [] { modSystem::RevertSettings(true); });
    dialog_.On({"cmdChange", 1}, [] { modSystem::SetupAim(true); });
    dialog_.On("cmdUpdates", [] { SharedForm<frmUpdate>().CheckForUpdate(true); });
    dialog_.On("SSTab1", [this] { SSTab1_Click(); });
    dialog_.On("sldTrans", [this] { sldTrans_Change(); });
    dialog_.On("cmbHKAction", [this] { cmbHKAction_Click(); });
    dialog_.On("cmdHKAdd", [this] { cmdHKAdd_Click(); });
    dialog_.OnEnter("txtHKText", [this] { cmdHKAdd_Click(); });
    dialog_.OnDelete("lvHotkeys", [this] { cmdDeleteHotkey_Click(); });
    dialog_.On("cmdDeleteHotkey", [this] { cmdDeleteHotkey_Click(); });
}

void frmSettings::Start() {
    if (!dialog_.IsShown()) {
        Load();
        dialog_.SetValue("SSTab1", kStartup);
    }
    dialog_.Show();
}

void frmSettings::Load() {
    settings::StoreMissing();
    for (const auto& row : kControls) {
        if (IsBound(row)) PutStored(dialog_, row, modRegistry::ReadSetting(row.tag));
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

// Whether logs can be kept where the user wants them; told if not. Otherwise each message would fail.
bool frmSettings::CanLog() {
    const auto folder = dialog_.Text("Text1");
    if (dialog_.LosesLetters("Text1"))
        return RefuseFolder(folder,
                            "cannot be kept: its name has letters that this Windows has no code for in the "
                            "language for non-Unicode programs. Choose a folder with another name.");
    if (dialog_.Value("Check14") == 0) return true;
    try {
        const auto bare = os::Path::FromText(folder.substr(0, folder.find_last_not_of('\\') + 1));
        if (!os::FolderExists(bare)) os::MakeFolder(bare);
        return true;
    } catch (const RuntimeError& error) {
        return RefuseFolder(folder, std::string("cannot be made: ") + error.what());
    }
}

bool frmSettings::RefuseFolder(const std::string& folder, const std::string& why) {
    dialog_.SetValue("SSTab1", kLogging);
    TellFault("The logging folder \"" + folder + "\" " + why);
    dialog_.Focus("Text1");
    return false;
}

// Whether the server is a name with a port or without; told if not. An address of IPv6 has colons of its own.
bool frmSettings::HasServer() {
    const auto text = dialog_.Text("txtServer");
    const auto server = Trim(text);
    const auto colon = server.find(':');
    const bool isIPv6 = server.starts_with('[') || server.find(':', colon + 1) != std::string_view::npos;
    const bool isRight = server.find(' ') == std::string_view::npos &&
                         (colon == std::string_view::npos || isIPv6 ||
                          ParseNumber<std::uint16_t>(server.substr(colon + 1)).value_or(0) != 0);
    if (isRight) return true;
    dialog_.SetValue("SSTab1", kServer);
    TellFault("\"" + text + "\" is no server. Write a name or an address, and behind it \":\" and a port.");
    dialog_.Focus("txtServer");
    return false;
}

void frmSettings::cmdOK_Click() {
    if (!CanLog() || !HasServer()) return;
    Save();
    dialog_.Close();
    ApplyOrTell();
}

void frmSettings::cmdApply_Click() {
    if (!CanLog() || !HasServer()) return;
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
    const auto action = modHotKeys::ActionNameOf(dialog_.Text("cmbHKAction"));
    for (const auto& hotkey : HotkeyRows()) {
        if (hotkey.combination == combination)
            return TellFault("A hotkey already exists with that key combination.");
        if (hotkey.action == action)
            return TellFault("The action \"" + action + "\" has the hotkey " + hotkey.combination +
                             " already. Remove that one first.");
    }
    dialog_.AddRow("lvHotkeys", {combination, action, text});
}

void frmSettings::cmdDeleteHotkey_Click() {
    if (const int row = dialog_.Value("lvHotkeys"); row >= 0) dialog_.RemoveRow("lvHotkeys", row);
}

std::vector<modHotKeys::StoredHotkey> frmSettings::HotkeyRows() const {
    std::vector<modHotKeys::StoredHotkey> rows;
    for (int row = 0; row < dialog_.RowCount("lvHotkeys"); ++row) {
        rows.push_back({dialog_.Cell("lvHotkeys", row, 0), dialog_.Cell("lvHotkeys", row, 1),
                        dialog_.Cell("lvHotkeys", row, 2)});
    }
    return rows;
}
