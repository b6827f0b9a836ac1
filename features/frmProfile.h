// frmProfile: edits the profile, and keeps it in the AIM client's "info.htm" unless it is a temporary one.
#pragma once

#include <string>

#include "features/ScreenNameChooser.h"
#include "os/Dialog.h"

class frmProfile {
 public:
    frmProfile();

    // Opens the dialog, or brings it to the front.
    void Start();

 private:
    void cmbScreenName_Click();
    void cmdSave_Click();

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
};
