// frmAway: sets an away message, typed or out of the list that the AIM client keeps.
#pragma once

#include <string>
#include <vector>

#include "features/dialogs/ScreenNameChooser.h"
#include "features/dialogs/SessionText.h"
#include "os/desktop/Dialog.h"

class frmAway {
 public:
    frmAway();

    // Opens the dialog, or brings it to the front. With a preset text it acts at once for "(all)" and is not
    // shown; a dialog that is open then keeps what is being typed.
    void Start(const std::string& presetText = {});

 private:
    void cmbScreenname_Click();
    void cmbAway_Click();
    void cmdSave_Click();

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
    SessionText text_;
    std::vector<std::string> messages_;  // by position in cmbAway
};
