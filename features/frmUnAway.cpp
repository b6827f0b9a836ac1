#include "features/frmUnAway.h"

namespace {

using Kind = os::ControlKind;

constexpr os::Control kControls[] = {
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
constexpr os::DialogTable kTable{"Remove Away Message", 240, 121, kControls};

void ClearAwayMessage(const std::string& name) {
    modSocket::SetAwayMessage(name, "");
}

}  // namespace

frmUnAway::frmUnAway() : dialog_(kTable), chooser_(dialog_, "cmbScreenname", true) {
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
}

void frmUnAway::Start(bool actAtOnce) {
    if (actAtOnce) return SendForAll(ClearAwayMessage);
    if (dialog_.IsShown() || chooser_.Fill()) dialog_.Show();
}

void frmUnAway::cmdSave_Click() {
    if (!chooser_.Send(ClearAwayMessage).empty()) dialog_.Close();
}
