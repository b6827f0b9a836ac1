// FakeDialog: dialogs without windows. DialogUser is the hand on the mouse and keyboard: it can do to a
// dialog what a user could, and nothing else, so a test fails on a disabled button or a control of another
// page.
#pragma once

#include <string>

#include "os/desktop/Dialog.h"

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
    // The same with a folder's name that no code page has whole; the control shows it all.
    void TypeBeyondCodePage(ControlId control);
    // Chooses an entry of a drop-down list or a row of a list view, turns to a page, moves a slider.
    void Choose(ControlId control, int position);
    // Del while the list view has the focus.
    void PressDelete(ControlId control);
    // Scrolls a virtual list, as far as its end lets it, until the row is the first that is seen; and the
    // first and the last that are seen whole.
    void ScrollTo(ControlId list, int row);
    int FirstSeen(ControlId list) const;
    int LastSeen(ControlId list) const;
    // Drags the window's edge until its inside has this size in dialog units, or its least size.
    void Resize(int width, int height);
    // Where a control is in the window, or on its page, in dialog units.
    DialogRect PlaceOf(ControlId control) const;
    // The marked part of a text.
    std::string Marked(ControlId control) const;
    // Enter while the control has the focus; Esc, which is also what closing the window does.
    void PressEnter(ControlId control);
    void PressEscape();

    // Whether the control can be seen: shown, and on the current page if it lies on one.
    bool Sees(ControlId control) const;
    bool HasFocus(ControlId control) const;
    // Whether the window has the keyboard.
    bool IsActive() const;

 private:
    Dialog& dialog_;
};

}  // namespace os::fake
