// frmIdle: sets an idle time.
#pragma once

#include "features/dialogs/ScreenNameChooser.h"
#include "os/desktop/Dialog.h"

class frmIdle {
 public:
    frmIdle();

    // Opens the dialog, or brings it to the front.
    void Start();

 private:
    void cmdIdle_Click();

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
};
