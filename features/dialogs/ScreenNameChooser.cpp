#include "features/dialogs/ScreenNameChooser.h"

#include "app/windows/AimClient.h"
#include "os/desktop/MessageBox.h"

void SendForAll(const SessionCommand& command) {
    if (SendForEach(SignedOnNames(), command).empty()) modSystem::doErr(false);
}

ScreenNameChooser::ScreenNameChooser(os::Dialog& dialog, std::string_view control, bool includeAll,
                                     Entries entries)
    : dialog_(dialog), control_(control), includeAll_(includeAll), entries_(entries) {}

bool ScreenNameChooser::Fill() {
    const bool withOriginal = entries_ == Entries::NamesWithOriginal;
    listed_ = modSocket::ListScreenNames(includeAll_, withOriginal);
    dialog_.ClearEntries(control_);
    for (const auto& [name, original] : listed_)
        dialog_.AddEntry(control_, withOriginal && name != kAllNames ? name + " (" + original + ")" : name);
    if (listed_.size() <= (includeAll_ ? 1u : 0u)) {
        modSystem::doErr(false);
        return false;
    }
    dialog_.SetValue(control_, 0);
    return true;
}

void ScreenNameChooser::Show(std::string_view textBox) {
    dialog_.Show();
    if (listed_.size() == (includeAll_ ? 2u : 1u)) dialog_.Focus(textBox);
}

bool ScreenNameChooser::HasName() const {
    return dialog_.Value(control_) >= (includeAll_ ? 1 : 0);
}

ScreenNames ScreenNameChooser::Chosen() const {
    const auto position = static_cast<std::size_t>(dialog_.Value(control_));
    return position < listed_.size() ? listed_[position] : ScreenNames();
}

std::vector<std::string> ScreenNameChooser::Names() const {
    if (HasName()) return {Chosen().name};
    std::vector<std::string> names;
    for (std::size_t i = 1; i < listed_.size(); ++i) names.push_back(listed_[i].name);
    return names;
}

std::vector<std::string> ScreenNameChooser::Send(const SessionCommand& command) {
    auto sent = SendForEach(Names(), command);
    if (!sent.empty()) return sent;
    if (HasName())
        os::ShowMessageBox("The screen name \"" + Chosen().name + "\" is not signed on any more.",
                           os::kApplicationTitle, os::BoxIcon::Warning);
    else
        modSystem::doErr(false);
    return {};
}
