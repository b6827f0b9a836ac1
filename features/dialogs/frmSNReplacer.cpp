#include "features/dialogs/frmSNReplacer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "base/Trap.h"
#include "core/modTools.h"
#include "os/desktop/MessageBox.h"

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
    {Kind::UnseenLabel, "lblNames", "Screennames and what they are replaced with"},
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

constexpr const char* kNameBox = "txtScreenname";
constexpr const char* kAliasBox = "txtReplace";

void Tell(const std::string& fault) {
    os::ShowMessageBox(fault, os::kApplicationTitle, os::BoxIcon::Error);
}

std::string Quoted(const std::string& name) {
    return "\"" + name + "\"";
}

// A zero byte, which a damaged file can hold, would end the text of its cell.
std::string Visible(std::string text) {
    std::replace(text.begin(), text.end(), '\0', '?');
    return text;
}

}  // namespace

frmSNReplacer::frmSNReplacer() : dialog_(kTable), chooser_(dialog_, "cmbScreenname", false) {
    dialog_.AddColumn("lvNames", "Screenname", 134);
    dialog_.AddColumn("lvNames", "Replaced With", 134);
    dialog_.OnEnter("txtScreenname", [this] { txtScreenname_Enter(); });
    dialog_.OnEnter("txtReplace", [this] { AddTyped(); });
    dialog_.OnDelete("lvNames", [this] { cmdRemove_Click(); });
    dialog_.On("cmdAdd", [this] { AddTyped(); });
    dialog_.On("cmdRemove", [this] { cmdRemove_Click(); });
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
    dialog_.On("cmdCancel", [this] { cmdCancel_Click(); });
}

void frmSNReplacer::Start() {
    Trap("frmSNReplacer:Start", [this] {
        if (dialog_.IsShown()) return dialog_.Show();
        if (!chooser_.Fill()) return;
        stored_ = modSNReplace::ReadAliasFile();
        edited_ = stored_;
        dialog_.ClearRows("lvNames");
        for (const auto& pair : edited_.pairs) ShowRow(pair);
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

bool frmSNReplacer::AddTyped() {
    const Replacement pair{dialog_.Text("txtScreenname"), dialog_.Text("txtReplace")};
    if (const auto refusal = RefusalOf(pair)) {
        Tell(refusal->why);
        dialog_.Focus(refusal->box);
        return false;
    }
    edited_.pairs.push_back(pair);
    ShowRow(pair);
    dialog_.SetText("txtScreenname", "");
    dialog_.SetText("txtReplace", "");
    dialog_.Focus("txtScreenname");
    return true;
}

void frmSNReplacer::cmdRemove_Click() {
    const int row = dialog_.Value("lvNames");
    if (row < 0) return;
    edited_.pairs.erase(edited_.pairs.begin() + row);
    dialog_.RemoveRow("lvNames", row);
}

void frmSNReplacer::cmdSave_Click() {
    const bool isTyped = !dialog_.Text("txtScreenname").empty() || !dialog_.Text("txtReplace").empty();
    if (isTyped && !AddTyped()) return;
    try {
        modSNReplace::SaveAliasFile(edited_);
    } catch (const std::exception& error) {
        Tell(std::string("The list could not be saved: ") + error.what() +
             "\r\nNothing is lost. Mend the cause and press Save again.");
        return;
    }
    dialog_.Close();
}

void frmSNReplacer::cmdCancel_Click() {
    if (edited_ == stored_) return dialog_.Close();
    const auto answer =
        os::ShowMessageBox("The list has been changed. Save the changes?", os::kApplicationTitle,
                           os::BoxIcon::Question, os::BoxButtons::YesNoCancel);
    if (answer == os::BoxResult::Yes) return cmdSave_Click();
    if (answer == os::BoxResult::No) dialog_.Close();
}

void frmSNReplacer::ShowRow(const Replacement& pair) {
    dialog_.AddRow("lvNames", {Visible(pair.screenName), Visible(pair.replacement)});
}

std::optional<frmSNReplacer::Refusal> frmSNReplacer::RefusalOf(const Replacement& pair) const {
    const auto name = NormalizeScreenName(pair.screenName);
    const auto alias = NormalizeScreenName(pair.replacement);
    if (name.empty()) return Refusal{kNameBox, "Type in the screenname that is to be replaced."};
    if (alias.empty()) return Refusal{kAliasBox, "Type in the name that it is to be replaced with."};
    for (const auto& [box, text] : {std::pair{kNameBox, &pair.screenName}, {kAliasBox, &pair.replacement}})
        if (text->size() > modSNReplace::kMaxName)
            return Refusal{box, "A screenname can be at most 255 characters long."};

    for (const auto& [otherName, otherAlias] : edited_.pairs) {
        if (NormalizeScreenName(otherName) == name || NormalizeScreenName(otherAlias) == name)
            return Refusal{kNameBox, "The screenname " + Quoted(otherName) +
                                         " is already being replaced by " + Quoted(otherAlias) + "."};
        // AIM would show two buddies under one name, and what is written to it can reach one alone.
        if (NormalizeScreenName(otherAlias) == alias || NormalizeScreenName(otherName) == alias)
            return Refusal{kAliasBox, Quoted(pair.replacement) + " stands for " + Quoted(otherName) +
                                          " already: messages to it could not reach both."};
    }
    // The cookie of the next sign-on carries the name, and a server does not know it by its alias.
    if (modSocket::ConnIndex(pair.screenName))
        return Refusal{kNameBox,
                       Quoted(pair.screenName) +
                           " is signed on through Wrenlow: with an alias it could not sign on again."};
    if (modSocket::ConnIndex(pair.replacement))
        return Refusal{kAliasBox, Quoted(pair.replacement) +
                                      " is signed on through Wrenlow: messages to it would go to " +
                                      Quoted(pair.screenName) + "."};
    if (edited_.pairs.size() < modSNReplace::kMaxPairs) return {};
    return Refusal{kNameBox,
                   "The list is full: it holds " + std::to_string(modSNReplace::kMaxPairs) + " screennames."};
}
