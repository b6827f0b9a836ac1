// The pages "Waiting" and "Buddy lists" of the Wrenlow window.
#include "desktop/frmWrenlow.h"
#include "features/SnacBytes.h"
#include "features/buddies/PutBack.h"
#include "features/waiting/WaitingMessages.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeMessageBox.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

namespace {

struct WaitingPages : FreshWorld {
    WaitingPages() { TheWaitingMessages().Forget(); }
    ~WaitingPages() override { TheWaitingMessages().Forget(); }

    static void Keep(const std::string& buddy, const std::string& text) {
        TheWaitingMessages().Keep({.since = 1'000'000'000,
                                   .tried = 1,
                                   .from = "me",
                                   .to = buddy,
                                   .shownTo = buddy,
                                   .data = OutgoingData(buddy, Tlv(2, MessageData(text)))});
    }
    void Open(const char* page) {
        form.emplace();
        form->Start(page);
        user.emplace(form->Window());
    }
    void Draw() { os::fake::AdvanceClock(3 * WrenlowPage::kRefreshMs); }

    Rig rig;
    std::optional<frmWrenlow> form;
    std::optional<os::fake::DialogUser> user;
};

}  // namespace

TEST_F(WaitingPages, MessagesAreShownSentAndDeleted) {
    Keep("tom", "first");
    Keep("ada", "<B>second</B>");
    Open("Waiting");
    auto& window = form->Window();
    EXPECT_EQ(Rows(window, "waitList", 5)[1], "ada|me|2001-09-09 01:46:40|1|second");
    EXPECT_FALSE(window.IsEnabled("waitSend"));
    user->Choose("waitList", 1);
    EXPECT_EQ(window.Text("waitText"), "second");
    user->Press("waitSend");
    EXPECT_EQ(window.Text("waitState"), "Its sender is not signed on.");
    auto pair = rig.SignOn("Me");
    user->Press("waitSend");
    os::fake::AdvanceClock(10);
    EXPECT_NE(pair.server.TakeReceived().find("second"), std::string::npos);
    // The message above goes; the selected one stays selected.
    TheWaitingMessages().Drop(TheWaitingMessages().All()[0].number);
    Draw();
    EXPECT_EQ(window.RowCount("waitList"), 1);
    EXPECT_EQ(window.Value("waitList"), 0);
    os::fake::boxes.answers = {os::BoxResult::No};
    user->PressDelete("waitList");
    EXPECT_EQ(window.RowCount("waitList"), 1);
    os::fake::boxes.answers = {os::BoxResult::Yes};
    user->Press("waitDelete");
    EXPECT_EQ(window.RowCount("waitList"), 0);
    EXPECT_EQ(window.Text("waitState"), "No message waits.");
}

TEST_F(WaitingPages, ListsAreComparedExportedImportedAndPutBack) {
    const std::string old = "group \"Friends\" group 1\nbuddy \"fred\" group 1 item 1\n";
    os::fake::PutFile("/program/buddies/me 2004-05-06-130509.txt", old);
    os::fake::PutFile("/program/buddies/me 2004-05-07-000000.txt",
                      old + "buddy \"tom\" group 1 item 2\ndeny \"eve\" group 0 item 3\n");
    Open("Buddy lists");
    auto& window = form->Window();
    EXPECT_EQ(Rows(window, "budList", 3),
              (Texts{"me|2004-05-07 00:00:00|+2", "me|2004-05-06 13:05:09|the first"}));
    user->Choose("budList", 0);
    EXPECT_EQ(window.Text("budText"), "Against the list before:\r\n+ tom (Friends)\r\n+ deny eve");
    EXPECT_FALSE(window.IsEnabled("budPutBack")) << "nobody is signed on";

    os::fake::fileDialogs.answer = "/program/list.csv";
    user->Choose("budForm", 1);
    user->Press("budExport");
    EXPECT_EQ(os::fake::fileDialogs.asked[0].proposedName, "me 2004-05-07.csv");
    EXPECT_EQ(os::fake::FileText("/program/list.csv"),
              "group,name,alias\r\n\"Friends\",\"fred\",\"\"\r\n\"Friends\",\"tom\",\"\"\r\n");
    os::fake::PutFile("/program/bob 1.txt", old);
    os::fake::fileDialogs.answer = "/program/bob 1.txt";
    user->Press("budImport");
    EXPECT_EQ(Rows(window, "budList", 1)[0], "bob");
    os::fake::PutFile("/program/bob 1.txt", "no list");
    user->Press("budImport");
    EXPECT_EQ(TakeBoxes(), Texts{"Line 1 is no entry of a buddy list"});

    auto pair = rig.SignOn("me");
    pair.server.Feed(Frame(2, 102, Snac(1, 3, "00 13"_hex)));
    os::fake::AdvanceClock(3000);
    pair.server.TakeReceived();
    user->Press("budPutBack");
    const auto request = RequestIdOf(pair.server.TakeReceived().substr(6));
    pair.server.Feed(Frame(2, 103, SnacPayload(0x13, 6, request, "00 00 00 00 00 00 01"_hex)));
    EXPECT_EQ(window.Text("budState"), "5 items will be added; nothing is deleted.");
    EXPECT_EQ(window.Text("budText"),
              "5 items will be added; nothing is deleted.\r\n+ group Friends\r\n"
              "+ fred (Friends)\r\n+ tom (Friends)\r\n+ deny eve");
    user->Press("budAdd");
    os::fake::AdvanceClock(500);
    pair.server.Feed(Frame(2, 104, SnacPayload(0x13, 0xE, request + 2, "00 00 00 00 00 00 00 00 00 00"_hex)));
    os::fake::boxes.answers = {os::BoxResult::No};
    os::fake::AdvanceClock(500);
    EXPECT_EQ(TakeBoxes(),
              Texts{"Added 5 items. Sign on again to see them.\r\n\r\nShall AIM be restarted now, to "
                    "sign on again?"});
    End(pair.server);
}
