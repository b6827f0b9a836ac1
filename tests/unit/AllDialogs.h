// AllDialogs: every dialog on the screen at once, for tests that look at their tables.
#pragma once

#include "app/services/frmError.h"
#include "desktop/frmBug.h"
#include "desktop/frmSettings.h"
#include "features/frmAway.h"
#include "features/frmIdle.h"
#include "features/frmProfile.h"
#include "features/frmSNReplacer.h"
#include "features/frmUnAway.h"
#include "features/frmUnIdle.h"
#include "tests/unit/FormRig.h"

class AllDialogs : public FormRig {
 protected:
    AllDialogs() {
        rig.SignOn("My Name");
        SharedForm<frmAway>().Start();
        SharedForm<frmUnAway>().Start();
        SharedForm<frmIdle>().Start();
        SharedForm<frmUnIdle>().Start();
        SharedForm<frmProfile>().Start();
        SharedForm<frmSNReplacer>().Start();
        SharedForm<frmBug>().Start();
        SharedForm<frmSettings>().Start(false);
        error_.Start("", "", "", 0);
    }

    static constexpr const char* kCaptions[] = {
        "Set Away Message",    "Remove Away Message", "Set Idle Time", "Unidle", "Edit Profile",
        "Screenname Replacer", "Reprot A Bug",        "Settings",      "Wrenlow"};

 private:
    frmError error_;
};
