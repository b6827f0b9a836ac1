#include "features/dialogs/RemoveForm.h"

#include <utility>

namespace {

using Kind = os::ControlKind;

constexpr os::Control kAwayControls[] = {
    {Kind::Label,
     "lblHelp",
     "Choose the screen name you wish to have the away message removed, and click Back!",
     {7, 7, 226, 16}},
    {Kind::Label, "lblScreenname", "Screen name:", {7, 30, 226, 8}},
    {Kind::DropDownList, "cmbScreenname", "", {7, 40, 226, 14}},
    // Two blanks before "will", as this note has always been written.
    {Kind::Label,
     "lblNote",
     "Note: if the away message was set from AIM itself, AIM's away dialog will still be shown, people will "
     "still get an auto-response, and you  will not be able to send any IMs. (until you click Back on AIM's "
     "away dialog)",
     {7, 61, 226, 32}},
    {Kind::DefaultButton, "cmdSave", "Back!", {129, 100, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {183, 100, 50, 14}},
};
constexpr os::DialogTable kAwayTable{"Remove Away Message", 240, 121, kAwayControls};

constexpr os::Control kIdleControls[] = {
    // The text says Unidle, the button says Back!: both as they have always been.
    {Kind::Label,
     "lblHelp",
     "Choose the screen name you wish to have the idle time removed, and click Unidle",
     {7, 7, 226, 16}},
    {Kind::Label, "lblScreenname", "Screen name:", {7, 30, 226, 8}},
    {Kind::DropDownList, "cmbScreenname", "", {7, 40, 226, 14}},
    {Kind::DefaultButton, "cmdSave", "Back!", {129, 61, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {183, 61, 50, 14}},
};
constexpr os::DialogTable kIdleTable{"Unidle", 240, 82, kIdleControls};

}  // namespace

RemoveForm::RemoveForm(const os::DialogTable& table, SessionCommand command)
    : dialog_(table), chooser_(dialog_, "cmbScreenname", true), command_(std::move(command)) {
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
}

void RemoveForm::Start(bool actAtOnce) {
    if (actAtOnce) return SendForAll(command_);
    if (dialog_.IsShown() || chooser_.Fill()) dialog_.Show();
}

void RemoveForm::cmdSave_Click() {
    if (!chooser_.Send(command_).empty()) dialog_.Close();
}

frmUnAway::frmUnAway()
    : RemoveForm(kAwayTable, [](const auto& name) { modSocket::SetAwayMessage(name, ""); }) {}

frmUnIdle::frmUnIdle() : RemoveForm(kIdleTable, [](const auto& name) { modSocket::SetIdle(name, 0); }) {}
