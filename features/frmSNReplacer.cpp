#include "features/frmSNReplacer.h"

#include <exception>

#include "base/Trap.h"
#include "core/modTools.h"
#include "features/modSNReplace.h"
#include "os/MessageBox.h"

namespace {

using Kind = os::ControlKind;

constexpr os::Control kControls[] = {
    {Kind::Label,
     "lblIntro",
     "The Screenname Replacer allows you to give a screenname on your buddy list an alias. For example, you "
     "could change the screenname \"asdf1234\" to something more eye-appealing: \"Fred\".",
     {7, 7, 286, 24}},
    {Kind::Label,
     "lblScope",
     "This new screenname will take place of the existing screenname whereever it may appear in all of AIM, "
     "including, but not limited to, IM conversations, profiles, and of course, the buddylist.",
     {7, 35, 286, 24}},
    {Kind::Label, "lblChooser", "Screen name:", {7, 65, 140, 8}},
    {Kind::DropDownList, "cmbScreenname", "", {7, 75, 140, 14}},
    // "effects" and "whereever" above: as these texts have always been written.
    {Kind::Label,
     "lblAll",
     "Screenname replacer effects all connected screennames for now.",
     {153, 74, 140, 16}},
    {Kind::Label,
     "lblHelp",
     "Type in the screenname and the replaced name, and click Add to add it.",
     {7, 100, 286, 8}},
    {Kind::Label, "lblScreenname", "Screenname:", {7, 113, 110, 8}},
    {Kind::TextBox, "txtScreenname", "", {7, 123, 110, 14}},
    {Kind::Label, "lblReplace", "Replace With", {123, 113, 110, 8}},
    {Kind::TextBox, "txtReplace", "", {123, 123, 110, 14}},
    {Kind::Button, "cmdAdd", "Add", {243, 123, 50, 14}},
    {Kind::ListView, "lvNames", "", {7, 144, 286, 78}},
    {Kind::Button, "cmdRemove", "Remove Selected", {7, 226, 76, 14}},
    {Kind::Label,
     "lblLimits",
     "Due to limitations of Wrenlow being a proxy, you must sign off and sign back on after saving changes "
     "for the changes to take place.",
     {7, 248, 286, 16}},
    {Kind::DefaultButton, "cmdSave", "Save", {189, 271, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {243, 271, 50, 14}},
};
constexpr os::DialogTable kTable{"Screenname Replacer", 300, 292, kControls};

void Refuse(const std::string& text) {
    os::ShowMessageBox(text, os::kApplicationTitle, os::BoxIcon::Error);
}

}  // namespace

frmSNReplacer::frmSNReplacer() : dialog_(kTable), chooser_(dialog_, "cmbScreenname", false) {
    dialog_.AddColumn("lvNames", "Screenname", 134);
    dialog_.AddColumn("lvNames", "Replaced With", 134);
    for (const char* box : {"txtScreenname", "txtReplace"})
        dialog_.LimitText(box, modSNReplace::kLongestName);
    dialog_.OnEnter("txtScreenname", [this] { txtScreenname_Enter(); });
    dialog_.OnEnter("txtReplace", [this] { cmdAdd_Click(); });
    dialog_.On("cmdAdd", [this] { cmdAdd_Click(); });
    dialog_.On("cmdRemove", [this] { cmdRemove_Click(); });
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
}

void frmSNReplacer::Start() {
    Trap("frmSNReplacer:Start", [this] {
        if (dialog_.IsShown()) return dialog_.Show();
        if (!chooser_.Fill()) return;
        const auto pairs = modSNReplace::ReadReplacements();
        dialog_.ClearRows("lvNames");
        for (const auto& [screenName, replacement] : pairs) AddRow(screenName, replacement);
        dialog_.SetText("txtScreenname", "");
        dialog_.SetText("txtReplace", "");
        dialog_.Show();
        dialog_.Focus("txtScreenname");
    });
}

// On to the next box: the default button would save a list that lacks the pair being typed.
void frmSNReplacer::txtScreenname_Enter() {
    dialog_.Focus("txtReplace");
}

void frmSNReplacer::cmdAdd_Click() {
    const auto screenName = dialog_.Text("txtScreenname");
    const auto replacement = dialog_.Text("txtReplace");
    // A pair with an empty half means nothing, and an empty name on top would end the list for its readers.
    if (NormalizeScreenName(screenName).empty()) return dialog_.Focus("txtScreenname");
    if (replacement.empty()) return dialog_.Focus("txtReplace");
    if (IsTaken(screenName)) return;
    AddRow(screenName, replacement);
    dialog_.SetText("txtScreenname", "");
    dialog_.SetText("txtReplace", "");
    dialog_.Focus("txtScreenname");
}

void frmSNReplacer::cmdRemove_Click() {
    for (int row = dialog_.RowCount("lvNames") - 1; row >= 0; --row)
        if (dialog_.IsRowSelected("lvNames", row)) dialog_.RemoveRow("lvNames", row);
}

void frmSNReplacer::cmdSave_Click() {
    std::vector<Replacement> pairs;
    for (int row = 0; row < dialog_.RowCount("lvNames"); ++row)
        pairs.push_back({dialog_.Cell("lvNames", row, 0), dialog_.Cell("lvNames", row, 1)});
    try {
        modSNReplace::SaveReplacements(pairs);
    } catch (const std::exception& error) {
        return Refuse(std::string("The list could not be saved: ") + error.what() +
                      "\r\nNothing is lost. Mend the cause and press Save again.");
    }
    dialog_.Close();
}

void frmSNReplacer::AddRow(const std::string& screenName, const std::string& replacement) {
    dialog_.AddRow("lvNames", {screenName, replacement});
}

// Whether a row has the name on either side, or there is room for no more; the user has been told then.
bool frmSNReplacer::IsTaken(const std::string& screenName) {
    const auto wanted = NormalizeScreenName(screenName);
    const int count = dialog_.RowCount("lvNames");
    for (int row = 0; row < count; ++row) {
        const auto name = dialog_.Cell("lvNames", row, 0);
        const auto replacement = dialog_.Cell("lvNames", row, 1);
        if (NormalizeScreenName(name) != wanted && NormalizeScreenName(replacement) != wanted) continue;
        Refuse("The screenname \"" + name + "\" is already being replaced by \"" + replacement + "\".");
        return true;
    }
    if (count < static_cast<int>(modSNReplace::kMostPairs)) return false;
    Refuse("The list is full: it holds " + std::to_string(modSNReplace::kMostPairs) + " screennames.");
    return true;
}
