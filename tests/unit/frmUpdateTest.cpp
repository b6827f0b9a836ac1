#include "desktop/frmUpdate.h"

#include "os/Files.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

namespace {

using os::fake::DialogUser;
using os::fake::Peer;

const std::string kFailed = "The connection to the update server failed.";
const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kOffer = kOk + "\r\nUpdate: 18 /get/setup.exe C:\\a/../..\\setup18.exe\r\n";
const std::string kPlace = "/program/chosen.exe", kTemporary = "/program/chosen.exe.0.tmp";

struct Update : FreshWorld {
    // The server's side of the connection that was made last.
    static Peer& Server() { return Rig::LastServer(); }

    void Check(bool bShow, const std::string& reply) {
        form->CheckForUpdate(bShow);
        Accept(Server());
        Server().Feed(reply);
    }

    DialogUser User() { return DialogUser(form->Window()); }

    // Presses Download; the user chooses the place, or cancels there.
    void BeginDownload(std::optional<std::string> place) {
        Check(false, kOffer);
        os::fake::fileDialogs.answer = std::move(place);
        User().Press("cmdDownload");
        Accept(Server());
    }

    bool IsBackAtTheOffer() {
        return form->Window().IsShown() && User().Sees("cmdDownload") && !User().Sees("prgDownload") &&
               os::fake::OpenSocketCount() == 0;
    }

    std::unique_ptr<frmUpdate> form = std::make_unique<frmUpdate>("update.example:8080");
};

TEST_F(Update, ABuildWithoutServerNeverConnectsAndAPortIsNotNeeded) {
    for (const char* server : {"", ":80", "update.example:", "update.example:x"}) {
        frmUpdate without{std::string(server)};
        without.CheckForUpdate(false);
        EXPECT_EQ(TakeBoxes(), Texts()) << server;
        without.CheckForUpdate(true);
        EXPECT_EQ(TakeBoxes(), Texts{"This build of Wrenlow has no update server."}) << server;
    }
    EXPECT_EQ(os::fake::OutgoingCount(), 0u);
    frmUpdate plain("update.example");
    plain.CheckForUpdate(false);
    EXPECT_EQ(Server().Port(), 80);
}

TEST_F(Update, TellsTheOutcomeOnlyToWhomAsked) {
    const auto refuse = [] { Server().RefuseConnect(); };
    const auto answer = [](const std::string& reply) {
        return [reply] { Accept(Server()), Server().Send(reply), Server().Close(); };
    };
    const struct {
        std::string outcome;
        std::function<void()> happens;
        Texts told;
    } cases[] = {
        {"up to date", answer(kOk + "\r\nUpdate: 17 /a b\r\n"), {"There are no new updates at this time."}},
        {"no page", answer("HTTP/1.1 404 Not Found\r\n\r\n"), {kFailed}},
        {"no offer", answer(kOk + "Content-Length: 4\r\n\r\nnone"), {}},
        {"no number", answer(kOk + "\r\nUpdate: soon /a b\r\n"), {}},
        {"cut off", answer(kOk + "\r\nUpdate: 18 /x"), {kFailed}},
        {"refused", refuse, {kFailed}},
        {"never answers", [] { os::fake::AdvanceClock(frmUpdate::kCheckLimitMs); }, {kFailed}},
    };
    for (const auto& [outcome, happens, told] : cases) {
        for (const bool bShow : {false, true}) {
            form->CheckForUpdate(bShow);
            os::fake::AdvanceClock(0);
            happens();
            net::ProcessPendingEvents();
            EXPECT_FALSE(form->Window().IsShown()) << outcome;
            EXPECT_EQ(TakeBoxes(), bShow ? told : Texts()) << outcome;
            EXPECT_EQ(os::fake::OpenSocketCount(), 0u) << outcome;
        }
    }
    form->CheckForUpdate(true);
    os::fake::AdvanceClock(frmUpdate::kCheckLimitMs - 1);
    EXPECT_EQ(TakeBoxes(), Texts()) << "given up too early";
}

TEST_F(Update, ASecondCheckStartsAnew) {
    Check(true, "HTTP/1.1 200");
    Check(false, kOk + "\r\nUpdate: 17\r\n");
    EXPECT_EQ(TakeBoxes(), Texts());
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
}

TEST_F(Update, AsksForTheFileThenForItsPlaceAndReadsNothingMeanwhile) {
    os::fake::fileDialogs.during = [&] {
        EXPECT_EQ(Server().Received(), "GET /get/setup.exe HTTP/1.1\r\nHost: update.example\r\n\r\n");
        Server().Send(kOk + "Content-Length: 3\r\n\r\nabc");
        End(Server());
        EXPECT_TRUE(User().Sees("lblConnect"));
        EXPECT_FALSE(User().Sees("cmdDownload"));
        form->CheckForUpdate(true);  // must not disturb
        EXPECT_EQ(os::fake::OutgoingCount(), 2u);
    };
    BeginDownload(kPlace);
    ASSERT_EQ(os::fake::fileDialogs.asked.size(), 1u);
    const auto& asked = os::fake::fileDialogs.asked.front();
    EXPECT_EQ(asked.title, "Save Setup File");
    EXPECT_EQ(asked.proposedName, "setup18.exe");  // the server's folders are cut off
    EXPECT_EQ(asked.owner, form->Window().Handle());
    EXPECT_EQ(os::fake::FileText(kPlace), "abc");
    EXPECT_TRUE(os::fake::fileWriters.isFromInternet.contains(kPlace));
    EXPECT_EQ(TakeBoxes(), Texts{"Download complete. Close Wrenlow and run the setup."});
}

TEST_F(Update, ShowsProgressAndRateAndPutsTheFileInPlaceAtTheEnd) {
    os::fake::PutFile(kPlace, "an older one");
    BeginDownload(kPlace);
    Server().Feed(kOk + "Content-Length: 300000\r\n\r\n");
    EXPECT_EQ(form->Window().Text("lblProgress"), "0 / 300000");
    Server().Feed(std::string(102'400, 'a'));
    EXPECT_EQ(form->Window().Text("lblProgress"), "102400 / 300000");
    EXPECT_EQ(form->Window().Value("prgDownload"), 102'400);
    EXPECT_EQ(os::fake::FileText(kPlace), "an older one");
    os::fake::AdvanceClock(1000);
    EXPECT_EQ(form->Window().Text("lblRate"), "100 KB/s");
    Server().Feed(std::string(197'600, 'b'));
    EXPECT_EQ(os::fake::FileText(kPlace), std::string(102'400, 'a') + std::string(197'600, 'b'));
    EXPECT_FALSE(os::fake::FileText(kTemporary));
    EXPECT_FALSE(form->Window().IsShown());

    BeginDownload(kPlace);
    Server().Feed(kOk + "\r\nabc");  // without a length it ends with the connection
    EXPECT_EQ(form->Window().Text("lblProgress"), "3");
    EXPECT_FALSE(User().Sees("prgDownload"));
    End(Server());
    EXPECT_EQ(os::fake::FileText(kPlace), "abc");
}

TEST_F(Update, CancelAnywhereGoesBackToTheOfferAndLeavesNothing) {
    Check(false, kOffer);
    EXPECT_TRUE(IsBackAtTheOffer());
    EXPECT_NE(form->Window().Text("lblOffer").find("revision 18"), std::string::npos);
    User().PressEscape();
    EXPECT_FALSE(form->Window().IsShown());

    BeginDownload(std::nullopt);  // in the save dialog
    EXPECT_TRUE(IsBackAtTheOffer());

    BeginDownload(kPlace);
    Server().Feed(kOk + "Content-Length: 6\r\n\r\nabc");
    EXPECT_EQ(form->Window().Text("cmdClose"), "Cancel");
    User().Press("cmdClose");
    EXPECT_TRUE(IsBackAtTheOffer());

    User().Press("cmdDownload");  // while connecting
    User().PressEscape();
    EXPECT_TRUE(IsBackAtTheOffer());

    EXPECT_FALSE(os::fake::FileText(kPlace) || os::fake::FileText(kTemporary));
    EXPECT_EQ(TakeBoxes(), Texts());
}

TEST_F(Update, AFailedDownloadSaysSoAndLeavesTheOldFileAlone) {
    const std::string head = kOk + "Content-Length: 6\r\n\r\nabc";
    const std::string noFile = "The update server did not send the file.";
    const struct {
        std::function<void()> happens;
        std::string told;
        std::string place = kPlace;
    } cases[] = {
        {[] { Server().Reset(); }, kFailed},
        {[&] { Server().Send(head), Server().Close(); },
         "The connection ended before the whole file was there."},
        {[] { Server().Send("HTTP/1.1 404 Not Found\r\n\r\nsorry"); }, noFile},
        {[] { Server().Send(kOk + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n"); }, noFile},
        {[&] { os::fake::fileWriters.room = 2, Server().Send(head); },
         "The file could not be saved: Disk full."},
        {[] {}, "The file could not be saved: Path not found", "/nowhere/setup.exe"},
    };
    os::fake::PutFile(kPlace, "old");
    for (const auto& [happens, told, place] : cases) {
        BeginDownload(place);
        happens();
        net::ProcessPendingEvents();
        EXPECT_EQ(TakeBoxes(), Texts{told});
        EXPECT_TRUE(IsBackAtTheOffer()) << told;
        EXPECT_EQ(os::fake::FileText(kPlace), "old") << told;
        EXPECT_FALSE(os::fake::FileText(kTemporary)) << told;
    }
}

TEST_F(Update, AFileThatAnotherProgramHoldsIsTriedAgainWhenAskedAndItsBytesAreKept) {
    const auto hold = [](bool held) { os::fake::FailWrites(kPlace, held ? 32 : 0); };
    for (const bool givenUp : {false, true}) {
        hold(true);
        os::fake::boxes.answers = {os::BoxResult::Yes, givenUp ? os::BoxResult::No : os::BoxResult::Yes};
        int boxes = 0;
        os::fake::boxes.during = [&] { hold(givenUp || ++boxes < 2); };
        BeginDownload(kPlace);
        Server().Feed(kOk + "Content-Length: 3\r\n\r\nabc");
        os::fake::boxes.during = {};
        hold(false);
        EXPECT_EQ(os::fake::FileText(kPlace).has_value(), !givenUp);
        EXPECT_EQ(IsBackAtTheOffer(), givenUp);
        EXPECT_EQ(TakeBoxes().size(), givenUp ? 2u : 3u);
        EXPECT_FALSE(os::fake::FileText(kTemporary));
        os::RemoveFile(os::Path::FromText(kPlace));
    }
}

TEST_F(Update, AConnectionLostWhileTheUserChoosesIsToldAfterwards) {
    os::fake::fileDialogs.during = [&] {
        Server().Reset();
        net::ProcessPendingEvents();
        EXPECT_EQ(TakeBoxes(), Texts());
    };
    BeginDownload(kPlace);
    EXPECT_EQ(TakeBoxes(), Texts{kFailed});
    EXPECT_TRUE(IsBackAtTheOffer());
}

TEST_F(Update, TheProgramMayEndWhileTheUserChooses) {
    os::fake::fileDialogs.during = [&] { form.reset(); };
    BeginDownload(kPlace);
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
    EXPECT_FALSE(os::fake::FileText(kPlace));
}

}  // namespace
