// RemoveForm: the dialogs that take something back: an away message (frmUnAway), an idle time (frmUnIdle).
// They differ in their texts and in the command that they send.
#pragma once

#include "features/dialogs/ScreenNameChooser.h"
#include "os/desktop/Dialog.h"

class RemoveForm {
 public:
    // Opens the dialog, or brings it to the front. With actAtOnce (a hotkey) it acts for "(all)" and is not
    // shown.
    void Start(bool actAtOnce = false);

 protected:
    RemoveForm(const os::DialogTable& table, SessionCommand command);
    ~RemoveForm() = default;

 private:
    void cmdSave_Click();

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
    SessionCommand command_;
};

class frmUnAway final : public RemoveForm {
 public:
    frmUnAway();
};

class frmUnIdle final : public RemoveForm {
 public:
    frmUnIdle();
};
