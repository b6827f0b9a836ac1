// AllDialogs: every dialog on the screen at once, for tests that look at their tables.
#pragma once

#include "app/windows/frmError.h"
#include "desktop/frmBug.h"
#include "desktop/frmSettings.h"
#include "desktop/frmUpdate.h"
#include "features/dialogs/RemoveForm.h"
#include "features/dialogs/frmAway.h"
#include "features/dialogs/frmIdle.h"
#include "features/dialogs/frmProfile.h"
#include "features/dialogs/frmSNReplacer.h"
#include "net/EventLoop.h"
#include "os/fake/FakeNetwork.h"
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
        SharedForm<frmSettings>().Start();
        error_.Start("", "", "", 0);
        OfferUpdate();
    }

    static constexpr const char* kCaptions[] = {
        "Set Away Message",    "Remove Away Message", "Set Idle Time", "Unidle",  "Edit Profile",
        "Screenname Replacer", "Reprot A Bug",        "Settings",      "Wrenlow", "Wrenlow Update"};

 private:
    void OfferUpdate() {
        update_.CheckForUpdate(false);
        auto& server = os::fake::Outgoing(os::fake::OutgoingCount() - 1);
        server.AcceptConnect();
        net::ProcessPendingEvents();
        server.Feed("HTTP/1.1 200 OK\r\n\r\nUpdate: 1234567 /setup.exe setup.exe\r\n");
        net::ProcessPendingEvents();
    }

    frmError error_;
    frmUpdate update_{"update.example"};
};
