// ScreenNameChooser: the list of screen names of every dialog, and what its "(all)" means.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/modSocket.h"
#include "features/SignedOnNames.h"
#include "os/Dialog.h"

// Sends the command for everyone that is signed on, as a hotkey asks without a dialog. With nobody signed on
// the user is told so (modSystem::doErr).
void SendForAll(const SessionCommand& command);

// A drop-down list of screen names in a dialog.
class ScreenNameChooser final : private NameList {
 public:
    enum class Entries { Names, NamesWithOriginal };

    ScreenNameChooser(os::Dialog& dialog, std::string_view control, bool includeAll,
                      Entries entries = Entries::Names);

    // Lists the names anew and chooses the first entry. When nobody is signed on the user is told so and
    // false comes back: the dialog is not to be shown.
    bool Fill();

    // Whether a name is chosen, and not "(all)".
    bool HasName() const;
    // The chosen name, and the name as the client typed it at sign-on out of the same entry.
    std::string Name() const;
    std::string OriginalName() const;

    // Sends the command for the chosen name, or for each listed name when "(all)" is chosen; returns the
    // names it went to. When there is none left the user has been told, and the dialog stays open.
    std::vector<std::string> Send(const SessionCommand& command);

 private:
    void Clear() override;
    void AddEntry(const std::string& entry) override;
    std::size_t EntryCount() const override;
    std::string EntryText(std::size_t index) const override;

    os::Dialog& dialog_;
    std::string_view control_;
    bool includeAll_;
    Entries entries_;
};
