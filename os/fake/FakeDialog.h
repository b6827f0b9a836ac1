// FakeDialog: dialogs without windows. DialogUser is the hand on the mouse and keyboard: it can do to a
// dialog what a user could, and nothing else, so a test fails on a disabled button or a control of another
// page.
#pragma once

#include <string>
#include <vector>

#include "os/Dialog.h"

namespace os::fake {

// The dialog of that caption that is shown; when several are, the one shown last. Throws std::logic_error
// when there is none.
Dialog& ShownDialog(const std::string& caption);
// How many dialogs of that caption are shown.
int ShownDialogCount(const std::string& caption);

class DialogUser {
 public:
    // A dialog may be given before it is shown; what is done to it while hidden throws std::logic_error.
    explicit DialogUser(Dialog& dialog) : dialog_(dialog) {}
    explicit DialogUser(const std::string& caption) : DialogUser(ShownDialog(caption)) {}

    // For reading the state back with the dialog's own calls.
    Dialog& Window() const { return dialog_; }

    // Clicks a button, check box or option button.
    void Press(ControlId control);
    // Replaces the text of a text box, as pasting over a marked text does.
    void Type(ControlId control, const std::string& text);
    // Chooses an entry of a drop-down list, turns to a page, moves a slider.
    void Choose(ControlId control, int position);
    void SelectRows(ControlId control, const std::vector<int>& rows);
    // Enter while the control has the focus; Esc, which is also what closing the window does.
    void PressEnter(ControlId control);
    void PressEscape();

    // Whether the control can be seen: shown, and on the current page if it lies on one.
    bool Sees(ControlId control) const;
    bool HasFocus(ControlId control) const;

 private:
    Dialog& dialog_;
};

}  // namespace os::fake
