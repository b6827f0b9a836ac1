// AllDialogs: every dialog on the screen at once, for tests that look at their tables.
#pragma once

#include "app/shell/modMenu.h"
#include "app/windows/frmError.h"
#include "desktop/frmUpdate.h"
#include "tests/unit/FormRig.h"

class AllDialogs : public FormRig {
 protected:
    AllDialogs() {
        rig.SignOn("My Name");
        for (const char* key :
             {"setaway", "setback", "setidle", "noidle", "editprofile", "snreplace", "bug", "settings"})
            modMenu::DoMenuCommand(key);
        error_.Start("", "", "", 0);
        update_.CheckForUpdate(false);
        Accept(Rig::LastServer());
        Rig::LastServer().Feed("HTTP/1.1 200 OK\r\n\r\nUpdate: 1234567 /setup.exe setup.exe\r\n");
    }

    static constexpr const char* kCaptions[] = {
        "Set Away Message",    "Remove Away Message", "Set Idle Time", "Unidle",  "Edit Profile",
        "Screenname Replacer", "Reprot A Bug",        "Settings",      "Wrenlow", "Wrenlow Update"};

 private:
    frmError error_;
    frmUpdate update_{"update.example"};
};
