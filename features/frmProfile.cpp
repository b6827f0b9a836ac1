#include "features/frmProfile.h"

#include <optional>

#include "app/services/modSystem.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "features/SessionText.h"
#include "os/Files.h"

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
constexpr std::size_t kLargestFile = std::size_t{1024} * 1024;

// The AIM client's folder for a screen name that is signed on, found by the name as it was typed at sign-on;
// "" when there is none.
std::string ClientFolder(const std::string& screenName) {
    const auto slot = modSocket::ConnIndex(screenName);
    const auto* const connection = slot ? modSocket::Connection(*slot) : nullptr;
    return connection == nullptr ? std::string() : modSystem::GetSNPath(connection->hasScreenNameOrig(false));
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
    if (folder.empty() || !os::FileExists(folder + "\\info.htm")) return {};
    const auto bytes = os::ReadWholeFile(folder + "\\info.htm", kLargestFile);
    if (!bytes)
        throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error: " + folder + "\\info.htm");
    return JoinedLines(*bytes);
}

void KeepProfile(const std::string& screenName, const std::string& text) {
    Trap("frmProfile:KeepProfile", [&] {
        const auto folder = ClientFolder(screenName);
        if (!folder.empty()) os::ReplaceFileWith(folder + "\\info.htm", text + "\r\n");
    });
}

}  // namespace

frmProfile::frmProfile() : dialog_(kTable), chooser_(dialog_, "cmbScreenName", true) {
    LimitToSessionText(dialog_, "txtProfile");
    dialog_.On("cmbScreenName", [this] { cmbScreenName_Click(); });
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
}

void frmProfile::Start() {
    if (dialog_.IsShown()) return dialog_.Show();
    if (!chooser_.Fill()) return;
    dialog_.SetText("txtProfile", "");
    dialog_.SetValue("chkTemp", 0);
    dialog_.Show();
}

void frmProfile::cmbScreenName_Click() {
    if (!chooser_.HasName()) return;
    if (const auto profile = KeptProfile(chooser_.Name())) dialog_.SetText("txtProfile", *profile);
}

void frmProfile::cmdSave_Click() {
    const auto text = dialog_.Text("txtProfile");
    if (!CheckSessionText(text)) return;
    const auto sent = chooser_.Send([&](const auto& name) { modSocket::SetProfile(name, text); });
    if (sent.empty()) return;
    if (dialog_.Value("chkTemp") == 0)
        for (const auto& name : sent) KeepProfile(name, text);
    dialog_.Close();
}
