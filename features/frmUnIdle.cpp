#include "features/frmUnIdle.h"

namespace {

using Kind = os::ControlKind;

constexpr os::Control kControls[] = {
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
constexpr os::DialogTable kTable{"Unidle", 240, 82, kControls};

}  // namespace

frmUnIdle::frmUnIdle() : dialog_(kTable), chooser_(dialog_, "cmbScreenname", true) {
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
}

void frmUnIdle::Start() {
    if (dialog_.IsShown() || chooser_.Fill()) dialog_.Show();
}

void frmUnIdle::cmdSave_Click() {
    const auto sent = chooser_.Send([](const auto& name) { modSocket::SetIdle(name, 0); });
    if (!sent.empty()) dialog_.Close();
}
