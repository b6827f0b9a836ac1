// ScreenNameChooser: the list of screen names of every dialog, and what its "(all)" means.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/modSocket.h"
#include "features/SignedOnNames.h"
#include "os/desktop/Dialog.h"

// Sends the command for everyone that is signed on, as a hotkey asks without a dialog. With nobody signed on
// the user is told so (modSystem::doErr).
void SendForAll(const SessionCommand& command);

// A drop-down list of screen names in a dialog.
class ScreenNameChooser {
 public:
    enum class Entries { Names, NamesWithOriginal };

    ScreenNameChooser(os::Dialog& dialog, std::string_view control, bool includeAll,
                      Entries entries = Entries::Names);

    // Lists the names anew and chooses the first entry. When nobody is signed on the user is told so and
    // false comes back: the dialog is not to be shown.
    bool Fill();

    // Shows the dialog after Fill. With one name there is little to choose: `textBox` gets the focus then.
    void Show(std::string_view textBox);

    // Whether a name is chosen, and not "(all)".
    bool HasName() const;
    // The chosen name, and the name as the client typed it at sign-on; empty when nothing is chosen.
    ScreenNames Chosen() const;

    // Its name alone, or each listed name when "(all)" is chosen.
    std::vector<std::string> Names() const;

    // Sends the command for Names(); returns those it went to. When there is none left the user has been
    // told, and the dialog stays open.
    std::vector<std::string> Send(const SessionCommand& command);

 private:
    os::Dialog& dialog_;
    std::string_view control_;
    bool includeAll_;
    Entries entries_;
    std::vector<ScreenNames> listed_;  // as in the control
};
