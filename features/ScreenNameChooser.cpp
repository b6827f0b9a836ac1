#include "features/ScreenNameChooser.h"

#include "app/services/modSystem.h"
#include "core/modTools.h"
#include "os/MessageBox.h"

void SendForAll(const SessionCommand& command) {
    if (SendForEach(SignedOnNames(), command).empty()) modSystem::doErr(false);
}

ScreenNameChooser::ScreenNameChooser(os::Dialog& dialog, std::string_view control, bool includeAll,
                                     Entries entries)
    : dialog_(dialog), control_(control), includeAll_(includeAll), entries_(entries) {}

bool ScreenNameChooser::Fill() {
    modSocket::ListScreenNames(*this, includeAll_, entries_ == Entries::NamesWithOriginal);
    if (EntryCount() <= (includeAll_ ? 1u : 0u)) {
        modSystem::doErr(false);
        return false;
    }
    dialog_.SetValue(control_, 0);
    return true;
}

bool ScreenNameChooser::HasName() const {
    return dialog_.Value(control_) >= (includeAll_ ? 1 : 0);
}

std::string ScreenNameChooser::Name() const {
    return TextBeforeParen(dialog_.Text(control_));
}

std::string ScreenNameChooser::OriginalName() const {
    return TextInParen(dialog_.Text(control_));
}

std::vector<std::string> ScreenNameChooser::Send(const SessionCommand& command) {
    std::vector<std::string> names;
    if (HasName()) {
        names.push_back(Name());
    } else {
        for (std::size_t i = 1; i < EntryCount(); ++i) names.push_back(TextBeforeParen(EntryText(i)));
    }
    auto sent = SendForEach(names, command);
    if (!sent.empty()) return sent;
    if (HasName())
        os::ShowMessageBox("The screen name \"" + names.front() + "\" is not signed on any more.",
                           os::kApplicationTitle, os::BoxIcon::Warning);
    else
        modSystem::doErr(false);
    return {};
}

void ScreenNameChooser::Clear() {
    dialog_.ClearEntries(control_);
}

void ScreenNameChooser::AddEntry(const std::string& entry) {
    dialog_.AddEntry(control_, entry);
}

std::size_t ScreenNameChooser::EntryCount() const {
    return static_cast<std::size_t>(dialog_.EntryCount(control_));
}

std::string ScreenNameChooser::EntryText(std::size_t index) const {
    return dialog_.Entry(control_, static_cast<int>(index));
}
