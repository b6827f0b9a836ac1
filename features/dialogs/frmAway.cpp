#include "features/dialogs/frmAway.h"

#include "app/services/SafeFileName.h"
#include "app/services/modRegistry.h"
#include "core/modTools.h"
#include "os/RegistryStore.h"

namespace {

using Kind = os::ControlKind;

constexpr os::Control kControls[] = {
    {Kind::Label, "lblScreenname", "Screen name:", {7, 7, 226, 8}},
    {Kind::DropDownList, "cmbScreenname", "", {7, 17, 226, 14}},
    {Kind::Label, "lblPredefined", "Pre-defined away messages (from AIM)", {7, 38, 226, 8}},
    {Kind::DropDownList, "cmbAway", "", {7, 48, 226, 14}},
    {Kind::Label, "lblAway", "Away message text", {7, 69, 226, 8}},
    {Kind::MultiLineText, "txtAway", "", {7, 79, 226, 80}},
    {Kind::DefaultButton, "cmdSave", "Away!", {129, 166, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {183, 166, 50, 14}},
};
constexpr os::DialogTable kTable{"Set Away Message", 240, 187, kControls};

constexpr const char* kUsersKey =
    "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Users\\";

// Of a stored message, in bytes: what is offered, and what is looked at to tell a long one from the end.
constexpr std::size_t kMaxOffered = 1023;
constexpr std::size_t kMaxStored = std::size_t{1024} * 1024;

struct StoredMessage {
    std::string title;
    std::string text;
};

// A stored message is HTML, "...<title>TITLE</title>TEXT". One without a title is its own title.
StoredMessage ParseStoredMessage(const std::string& value) {
    constexpr std::string_view kOpening = "<title>";
    constexpr std::string_view kClosing = "</title>";
    const auto opening = value.find(kOpening);
    if (opening == std::string::npos) return {value, value};
    const auto begin = opening + kOpening.size();
    const auto end = value.find(kClosing, begin);
    if (end == std::string::npos) return {value, value};
    return {value.substr(begin, end - begin), value.substr(end + kClosing.size())};
}

// The messages that the AIM client keeps for a screen name: GoneMsg0, GoneMsg1, ... up to the first that is
// missing or empty. One that is longer than what is read of a setting elsewhere is passed over.
std::vector<StoredMessage> StoredMessages(const std::string& originalName) {
    const auto key = kUsersKey + SafeFileName(NormalizeScreenName(originalName)) + "\\IAmGoneList\\";
    std::vector<StoredMessage> messages;
    for (int number = 0;; ++number) {
        const auto stored = os::ReadRegistryValue(os::RegistryHive::CurrentUser, key,
                                                  "GoneMsg" + std::to_string(number), kMaxStored);
        if (!stored || stored->data.empty()) return messages;
        if (stored->data.size() > kMaxOffered) continue;
        messages.push_back(ParseStoredMessage(modRegistry::ValueAsText(*stored)));
    }
}

}  // namespace

frmAway::frmAway()
    : dialog_(kTable),
      chooser_(dialog_, "cmbScreenname", true, ScreenNameChooser::Entries::NamesWithOriginal),
      text_(dialog_, "txtAway") {
    dialog_.On("cmbScreenname", [this] { cmbScreenname_Click(); });
    dialog_.On("cmbAway", [this] { cmbAway_Click(); });
    dialog_.On("cmdSave", [this] { cmdSave_Click(); });
}

void frmAway::Start(const std::string& presetText) {
    if (!presetText.empty()) {
        SendForAll([&](const auto& name) { modSocket::SetAwayMessage(name, presetText); });
        return;
    }
    if (dialog_.IsShown()) return dialog_.Show();
    if (!chooser_.Fill()) return;
    dialog_.ClearEntries("cmbAway");
    dialog_.SetText("txtAway", "");
    messages_.clear();
    text_.IsFor(chooser_.Names());
    chooser_.Show("txtAway");
}

void frmAway::cmbScreenname_Click() {
    text_.IsFor(chooser_.Names());
    if (!chooser_.HasName()) return;
    dialog_.ClearEntries("cmbAway");
    messages_.clear();
    for (auto& [title, text] : StoredMessages(chooser_.Chosen().original)) {
        dialog_.AddEntry("cmbAway", title);
        messages_.push_back(std::move(text));
    }
}

void frmAway::cmbAway_Click() {
    const int position = dialog_.Value("cmbAway");
    if (position >= 0) text_.Open(messages_.at(static_cast<std::size_t>(position)), "This away message");
}

void frmAway::cmdSave_Click() {
    if (!text_.CanBeSent()) return;
    const auto text = dialog_.Text("txtAway");
    const auto sent = chooser_.Send([&](const auto& name) { modSocket::SetAwayMessage(name, text); });
    if (!sent.empty()) dialog_.Close();
}
