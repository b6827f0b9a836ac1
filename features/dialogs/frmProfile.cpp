#include "features/dialogs/frmProfile.h"

#include <optional>

#include "app/services/modSystem.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "os/Files.h"
#include "os/desktop/MessageBox.h"

namespace {

using Kind = os::ControlKind;

constexpr os::Control kControls[] = {
    {Kind::Label, "lblScreenName", "Screen name:", {7, 7, 266, 8}},
    {Kind::DropDownList, "cmbScreenName", "", {7, 17, 266, 14}},
    {Kind::Label,
     "lblProfile",
     "Type your profile into the box below. Your profile from AIM has already been entered into the box for "
     "you. You may use limited HTML.",
     {7, 38, 266, 16}},
    {Kind::MultiLineText, "txtProfile", "", {7, 57, 266, 110}},
    {Kind::CheckBox,
     "chkTemp",
     "Temporary profile (will be reverted back to last non-temporary profile on next sign on if checked)",
     {7, 174, 266, 18}},
    {Kind::DefaultButton, "cmdSave", "Save", {169, 199, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {223, 199, 50, 14}},
};
constexpr os::DialogTable kTable{"Edit Profile", 280, 220, kControls};

// More than a profile can have; what a damaged file holds beyond it is not read.
constexpr std::size_t kMaxFileBytes = std::size_t{1024} * 1024;

// The AIM client's folder for a screen name that is signed on, found by the name as it was typed at sign-on;
// empty when there is none.
os::Path ClientFolder(const std::string& screenName) {
    const auto slot = modSocket::ConnIndex(screenName);
    const auto* const connection = slot ? modSocket::Connection(*slot) : nullptr;
    return connection == nullptr ? os::Path() : modSystem::GetSNPath(connection->hasScreenNameOrig(false));
}

// The file's lines joined by CR LF, without the empty ones before the first text and without an end of line
// behind the last.
std::string JoinedLines(std::string_view text) {
    std::string joined;
    while (!text.empty()) {
        const auto end = std::min(text.find_first_of("\r\n"), text.size());
        if (!joined.empty()) joined += "\r\n";
        joined += text.substr(0, end);
        text.remove_prefix(end);
        text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<std::size_t>(1, text.size()));
    }
    return joined;
}

// The profile that the AIM client keeps; nothing when it keeps none.
std::optional<std::string> KeptProfile(const std::string& screenName) {
    const auto folder = ClientFolder(screenName);
    const auto file = folder / "info.htm";
    if (folder.IsEmpty() || !os::FileExists(file)) return {};
    const auto bytes = os::ReadWholeFile(file, kMaxFileBytes);
    if (!bytes) throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error: " + file.Shown());
    return JoinedLines(*bytes);
}

bool IsBlank(const std::string& text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

// One press of Enter must not wipe a profile that the user has not seen.
bool WantsNoProfile(const std::string& whose) {
    return os::ShowMessageBox("The profile of " + whose + " will be empty. Is that what you want?",
                              os::kApplicationTitle, os::BoxIcon::Question,
                              os::BoxButtons::YesNo) == os::BoxResult::Yes;
}

void KeepProfile(const std::string& screenName, const std::string& text) {
    Trap("frmProfile:KeepProfile", [&] {
        const auto folder = ClientFolder(screenName);
        if (!folder.IsEmpty()) os::ReplaceFileWith(folder / "info.htm", text + "\r\n");
    });
}

}  // namespace

frmProfile::frmProfile()
    : dialog_(kTable), chooser_(dialog_, "cmbScreenName", true), text_(dialog_, "txtProfile") {
    dialog_.On("cmbScreenName", [this] { cmbScreenName_Click(); });
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
}

void frmProfile::Start() {
    if (dialog_.IsShown()) return dialog_.Show();
    if (!chooser_.Fill()) return;
    dialog_.SetText("txtProfile", "");
    dialog_.SetValue("chkTemp", 0);
    isUnseen_ = false;
    text_.IsFor(chooser_.Names());
    chooser_.Show("txtProfile");
}

void frmProfile::cmbScreenName_Click() {
    text_.IsFor(chooser_.Names());
    isUnseen_ = false;
    if (!chooser_.HasName()) return;
    if (const auto profile = KeptProfile(chooser_.Chosen().name))
        isUnseen_ = !text_.Open(*profile, "The profile in AIM");
}

void frmProfile::cmdSave_Click() {
    if (!text_.CanBeSent()) return;
    const auto text = dialog_.Text("txtProfile");
    const bool isSeen = chooser_.HasName() && !isUnseen_;
    if (IsBlank(text) && !isSeen &&
        !WantsNoProfile(chooser_.HasName() ? chooser_.Chosen().name : "everybody who is signed on"))
        return;
    const auto sent = chooser_.Send([&](const auto& name) { modSocket::SetProfile(name, text); });
    if (sent.empty()) return;
    if (dialog_.Value("chkTemp") == 0)
        for (const auto& name : sent) KeepProfile(name, text);
    dialog_.Close();
}
