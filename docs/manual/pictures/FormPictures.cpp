// Pictures of the program's windows for the manual: opens each with something in it, on real windows and
// everything else faked, and writes FOLDER\NAME.bmp. docs/manual/make-images runs it at several resolutions.
#include <cstdio>
#include <stdexcept>
#include <string>

#include "app/services/modRegistry.h"
#include "desktop/frmSettings.h"
#include "desktop/frmUpdate.h"
#include "docs/manual/pictures/Picture.h"
#include "os/EventLoop.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFileDialogs.h"
#include "os/fake/FakeNetwork.h"

namespace {

void SettingsPages() {
    constexpr const char* kHotkeysKey = "software\\Wrenlow\\hotkeys\\";
    const auto store = [&](const char* name, const char* data) {
        modRegistry::SetValue(os::RegistryHive::CurrentUser, kHotkeysKey, name, data,
                              os::RegistryType::String);
    };
    modRegistry::WriteSetting("enablehotkey", "1");
    modRegistry::WriteSetting("trans1", "1");
    store("n", "3");
    store("1n", "Ctrl+Alt+Page Down");
    store("1nt", "Set Away");
    store("1na", "Out for lunch, back at one");
    store("2n", "Ctrl+Alt+Page Up");
    store("2nt", "Clear Away");
    store("3n", "Ctrl+Shift+F12");
    store("3nt", "Panic!");

    frmSettings form;
    form.Start(false);
    os::fake::DialogUser user(form.Window());
    const char* const pages[] = {"startup", "logging", "other", "translucency", "hotkeys"};
    for (int page = 0; page < 5; ++page) {
        if (page != 0) user.Choose("SSTab1", page);
        Picture(form.Window(), std::string("settings-") + pages[page]);
    }
}

void UpdateStages() {
    frmUpdate form("update.example");
    form.CheckForUpdate(false);
    auto& server = os::fake::Outgoing(0);
    server.AcceptConnect();
    os::ProcessPendingEvents();
    server.Feed("HTTP/1.1 200 OK\r\n\r\nUpdate: 18 /wrenlow18.exe wrenlow18.exe\r\n");
    Picture(form.Window(), "update-offer");
    os::fake::AnswerSaveFile("/program/wrenlow18.exe");
    os::fake::DialogUser(form.Window()).Press("cmdDownload");
    auto& download = os::fake::Outgoing(1);
    download.AcceptConnect();
    os::ProcessPendingEvents();
    download.Feed("HTTP/1.1 200 OK\r\nContent-Length: 1048576\r\n\r\n" + std::string(655'360, 'x'));
    os::fake::AdvanceClock(1000);
    Picture(form.Window(), "update-download");
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: form_pictures FOLDER\n");
        return 2;
    }
    SetPictureFolder(arguments[1]);
    try {
        SettingsPages();
        UpdateStages();
        CommandDialogPictures();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "form_pictures: %s\n", error.what());
        return 1;
    }
    return 0;
}
