#include "features/dialogs/frmIdle.h"

#include "features/IdleMinutes.h"
#include "os/desktop/MessageBox.h"

namespace {

using Kind = os::ControlKind;

constexpr os::Control kControls[] = {
    {Kind::Label, "lblScreenname", "Screen name:", {7, 7, 186, 8}},
    {Kind::DropDownList, "cmbScreenname", "", {7, 17, 186, 14}},
    {Kind::Label, "lblIdle", "No. of idle minutes: (max 65535)", {7, 38, 186, 8}},
    {Kind::TextBox, "txtIdle", "", {7, 48, 60, 14}},
    // Reserved: no command reads it yet.
    {Kind::CheckBox, "Check1", "Prevent AIM from controlling idle time", {7, 69, 186, 10}},
    {Kind::DefaultButton, "cmdIdle", "Idle", {89, 86, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {143, 86, 50, 14}},
};
constexpr os::DialogTable kTable{"Set Idle Time", 200, 107, kControls};

}  // namespace

frmIdle::frmIdle() : dialog_(kTable), chooser_(dialog_, "cmbScreenname", true) {
    dialog_.On("cmdIdle", [this] { cmdIdle_Click(); });
}

void frmIdle::Start() {
    if (dialog_.IsShown()) return dialog_.Show();
    if (!chooser_.Fill()) return;
    dialog_.SetText("txtIdle", "");
    dialog_.SetValue("Check1", 0);
    dialog_.Show();
    dialog_.Focus("txtIdle");
}

void frmIdle::cmdIdle_Click() {
    const auto [minutes, refusal] = ReadIdleMinutes(dialog_.Text("txtIdle"));
    if (refusal != nullptr) {
        os::ShowMessageBox(refusal);
        return dialog_.Focus("txtIdle");
    }
    const auto sent = chooser_.Send([m = minutes](const auto& name) { modSocket::SetIdle(name, m); });
    if (!sent.empty()) dialog_.Close();
}
