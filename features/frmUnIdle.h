// frmUnIdle: removes an idle time.
#pragma once

#include "features/ScreenNameChooser.h"
#include "os/Dialog.h"

class frmUnIdle {
 public:
    frmUnIdle();

    // Opens the dialog, or brings it to the front.
    void Start();

 private:
    void cmdSave_Click();

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
};
