#include <gtest/gtest.h>

#include "app/windows/SharedForm.h"
#include "app/windows/frmError.h"
#include "desktop/frmBug.h"
#include "docs/manual/pictures/Picture.h"
#include "features/dialogs/RemoveForm.h"
#include "features/dialogs/frmAway.h"
#include "features/dialogs/frmIdle.h"
#include "features/dialogs/frmProfile.h"
#include "features/dialogs/frmSNReplacer.h"
#include "os/RegistryStore.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

using os::fake::DialogUser;

void ShowAway() {
    const std::string key =
        "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Users\\walter\\IAmGoneList\\";
    os::WriteRegistryValue(
        os::RegistryHive::CurrentUser, key, "GoneMsg0", os::RegistryType::String,
        "<title>Lunch</title>Out for lunch, back at one.\r\n\r\n<b>Leave me a message!</b>");
    SharedForm<frmAway>().Start();
    DialogUser user("Set Away Message");
    user.Choose("cmbScreenname", 1);
    user.Choose("cmbAway", 0);
}

void ShowIdle() {
    SharedForm<frmIdle>().Start();
    DialogUser("Set Idle Time").Type("txtIdle", "45");
}

void ShowProfile() {
    os::WriteRegistryValue(os::RegistryHive::CurrentUser, "Volatile Environment", "APPDATA",
                           os::RegistryType::String, "C:\\Profile");
    os::fake::PutFile("C:\\Profile\\Aim\\walter\\info.htm",
                      "<b>Walter</b>\r\n<i>Birds, bicycles, black tea.</i>\r\n\r\nI answer in the evening.");
    SharedForm<frmProfile>().Start();
    DialogUser("Edit Profile").Choose("cmbScreenName", 1);
}

void ShowReplacer() {
    os::fake::PutFile("/program/repl.dat", "asdf1234\r\nFred\r\nqwerty 99\r\nAunt Wilma\r\n");
    SharedForm<frmSNReplacer>().Start();
}

void ShowError() {
    static frmError error;
    error.Start("Invalid procedure call or argument", "5", "modSystem:GetSNPath", 0);
}

constexpr struct {
    const char* caption;
    const char* name;
    void (*show)();
} kDialogs[] = {
    {"Set Away Message", "away", ShowAway},
    {"Remove Away Message", "back", [] { SharedForm<frmUnAway>().Start(); }},
    {"Set Idle Time", "idle", ShowIdle},
    {"Unidle", "unidle", [] { SharedForm<frmUnIdle>().Start(); }},
    {"Edit Profile", "profile", ShowProfile},
    {"Screenname Replacer", "replacer", ShowReplacer},
    {"Reprot A Bug", "bug", [] { SharedForm<frmBug>().Start(); }},
    {"Wrenlow", "error", ShowError},
};

}  // namespace

void CommandDialogPictures() {
    Rig rig;
    rig.SignOn("Walter");
    rig.SignOn("Blue Bird 7");
    for (const auto& dialog : kDialogs) {
        dialog.show();
        auto& window = os::fake::ShownDialog(dialog.caption);
        Picture(window, dialog.name);
        window.Close();
    }
    UnloadForms();
}
