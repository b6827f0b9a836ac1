// Pictures of the program's windows for the manual: opens each with something in it, on real windows and
// everything else faked, and writes FOLDER\NAME.bmp. docs/manual/make-images runs it at several resolutions.
#include <cstdio>
#include <stdexcept>
#include <string>

#include "app/services/modRegistry.h"
#include "desktop/frmSettings.h"
#include "desktop/frmUpdate.h"
#include "desktop/frmWrenlow.h"
#include "docs/manual/pictures/Picture.h"
#include "features/buddies/BuddyFiles.h"
#include "features/waiting/WaitingMessages.h"
#include "net/EventLoop.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeNetwork.h"
#include "tests/unit/Messages.h"

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
    form.Start();
    os::fake::DialogUser user(form.Window());
    const char* const pages[] = {"startup", "logging", "other",   "translucency",
                                 "hotkeys", "server",  "messages"};
    for (int page = 0; page < 7; ++page) {
        if (page != 0) user.Choose("SSTab1", page);
        Picture(form.Window(), std::string("settings-") + pages[page]);
    }
}

// Pages of the Wrenlow window.
void WaitingAndBuddyLists() {
    constexpr std::int64_t kEvening = 1'076'534'040;  // 11 February 2004
    const struct {
        const char *to, *text;
        std::uint32_t tried;
    } messages[] = {{"Fred", "Film on Friday at eight? I have two tickets.", 1},
                    {"annesample", "Happy birthday!", 3}};
    for (const auto& message : messages) {
        TheWaitingMessages().Keep({.since = kEvening,
                                   .tried = message.tried,
                                   .from = "Walter Sample",
                                   .to = message.to,
                                   .shownTo = message.to,
                                   .data = OutgoingData(message.to, Tlv(2, MessageData(message.text)))});
    }
    const BuddyList first = {{"Friends", 1, 0, BuddyItem::Group, ""},
                             {"Work", 2, 0, BuddyItem::Group, ""},
                             {"asdf1234", 1, 1, BuddyItem::Buddy, ""},
                             {"annesample", 1, 2, BuddyItem::Buddy, ""},
                             {"tomsample", 2, 3, BuddyItem::Buddy, ""}};
    auto second = first;
    second.pop_back();
    second.push_back({"bobsample", 2, 4, BuddyItem::Buddy, ""});
    second.push_back({"stranger77", 0, 5, BuddyItem::Deny, ""});
    os::fake::timeOfDay.local = {2004, 1, 30, 18, 2, 11};
    KeepBuddyList("Walter Sample", first);
    os::fake::timeOfDay.local = {2004, 2, 11, 21, 14, 0};
    KeepBuddyList("Walter Sample", second);
    frmWrenlow form;
    os::fake::DialogUser user(form.Window());
    form.Start("Waiting");
    user.Choose("waitList", 0);
    Picture(form.Window(), "waiting");
    form.Start("Buddy lists");
    user.Choose("budList", 0);
    Picture(form.Window(), "buddy-lists");
}

void Messages() {
    modRegistry::WriteSetting("logwhere", "C:\\AimLogs\\");
    const auto line = [](const char* name, const char* time, const char* text) {
        return std::string(name) + " (" + time + "): " + text + "\r\n";
    };
    const auto put = [](const char* name, const std::string& text) {
        os::fake::PutFile(std::string("C:/AimLogs/") + name, text);
    };
    put("Fred 2004-02-11.txt", line("Fred", "21:14:02", "film on Friday at eight?") +
                                   line("Walter", "21:14:40", "gladly. Do you have tickets?") +
                                   line("Fred", "21:15:11", "two. Pizza before it, as the last time?") +
                                   line("Walter", "21:15:30", "at seven, then"));
    put("Fred 2004-02-09.txt", line("Fred", "19:02:12", "did the parcel come?"));
    put("Fred 2004-02-02.txt", line("Fred", "20:40:00", "hi there"));
    put("annesample 2004-02-10.txt", line("annesample", "18:30:05", "I know a good place for pizza"));
    put("annesample 2004-01-20.txt", line("annesample", "12:00:00", "happy new year"));
    put("tomsample 2004-02-01.txt", line("tomsample", "08:15:44", "see you at work"));
    frmWrenlow form;
    os::fake::DialogUser user(form.Window());
    form.Start("Messages");
    os::fake::AdvanceClock(1000);
    user.Choose("logNames", 0);
    Picture(form.Window(), "messages");
    user.Type("logSearch", "pizza");
    os::fake::AdvanceClock(1000);
    user.Choose("logHits", 0);
    Picture(form.Window(), "messages-search");
}

void UpdateStages() {
    frmUpdate form("update.example");
    form.CheckForUpdate(false);
    auto& server = os::fake::Outgoing(0);
    server.AcceptConnect();
    net::ProcessPendingEvents();
    server.Feed("HTTP/1.1 200 OK\r\n\r\nUpdate: 18 /wrenlow18.exe wrenlow18.exe\r\n");
    Picture(form.Window(), "update-offer");
    os::fake::fileDialogs.answer = "/program/wrenlow18.exe";
    os::fake::DialogUser(form.Window()).Press("cmdDownload");
    auto& download = os::fake::Outgoing(1);
    download.AcceptConnect();
    net::ProcessPendingEvents();
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
        WaitingAndBuddyLists();
        Messages();
        CommandDialogPictures();
        WrenlowPictures();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "form_pictures: %s\n", error.what());
        return 1;
    }
    return 0;
}
