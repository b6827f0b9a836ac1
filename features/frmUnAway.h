// frmUnAway: removes an away message.
#pragma once

#include "features/ScreenNameChooser.h"
#include "os/Dialog.h"

class frmUnAway {
 public:
    frmUnAway();

    // Opens the dialog, or brings it to the front. With actAtOnce (a hotkey) it acts for "(all)" and is not
    // shown.
    void Start(bool actAtOnce = false);

 private:
    void cmdSave_Click();

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
};
