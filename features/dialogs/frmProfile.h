// frmProfile: edits the profile, and keeps it in the AIM client's "info.htm" unless it is a temporary one.
#pragma once

#include <string>

#include "features/dialogs/ScreenNameChooser.h"
#include "features/dialogs/SessionText.h"
#include "os/desktop/Dialog.h"

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
    SessionText text_;
    bool isUnseen_ = false;  // the kept profile of the chosen name was too long to be opened
};
