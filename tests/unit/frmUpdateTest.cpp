#include "desktop/frmUpdate.h"

#include <gtest/gtest.h>

#include "os/EventLoop.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFileDialogs.h"
#include "os/fake/FakeFileWriter.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeMessageBox.h"
#include "os/fake/FakeNetwork.h"
#include "os/fake/FakeWorld.h"

namespace {

using os::fake::DialogUser;
using os::fake::Peer;

constexpr const char* kFailed = "The connection to the update server failed.";
const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kOffer = kOk + "\r\nUpdate: 18 /get/setup.exe C:\\a/../..\\setup18.exe\r\n";

class Update : public testing::Test {
 protected:
    void SetUp() override {
        os::fake::ResetWorld();
        os::fake::ResetMessageBoxes();
        os::fake::ResetFileDialogs();
        os::fake::ResetFileWriters();
        os::fake::SetProgram("/program", "wrenlow");
        form = std::make_unique<frmUpdate>("update.example:8080");
    }

    // The server's side of the connection that was made last.
    Peer& Server() { return os::fake::Outgoing(os::fake::OutgoingCount() - 1); }

    void Check(bool bShow, const std::string& reply) {
        form->CheckForUpdate(bShow);
        Server().AcceptConnect();
        os::ProcessPendingEvents();
        Server().Feed(reply);
    }

    DialogUser User() { return DialogUser(form->Window()); }

    // Presses Download; the user chooses the place, or cancels there.
    void BeginDownload(std::optional<std::string> place) {
        Check(false, kOffer);
        os::fake::AnswerSaveFile(std::move(place));
        User().Press("cmdDownload");
        Server().AcceptConnect();
        os::ProcessPendingEvents();
    }

    std::string OnlyBox() {
        const auto& boxes = os::fake::ShownBoxes();
        return boxes.size() == 1 ? boxes.front().text : std::to_string(boxes.size()) + " boxes";
    }

    bool IsBackAtTheOffer() {
        return form->Window().IsShown() && User().Sees("cmdDownload") && !User().Sees("prgDownload") &&
               os::fake::OpenSocketCount() == 0;
    }

    std::unique_ptr<frmUpdate> form;
};

constexpr const char* kPlace = "/program/chosen.exe";

TEST_F(Update, AsksByExactlyThisRequest) {
    form->CheckForUpdate(false);
    EXPECT_EQ(Server().Host(), "update.example");
    EXPECT_EQ(Server().Port(), 8080);
    Server().AcceptConnect();
    os::ProcessPendingEvents();
    EXPECT_EQ(Server().Received(),
              "GET /wrenlow/latest_version.php HTTP/1.1\r\nHost: update.example\r\n\r\n");
    frmUpdate plain("update.example");
    plain.CheckForUpdate(false);
    EXPECT_EQ(Server().Port(), 80);
}

TEST_F(Update, ABuildWithoutServerNeverConnects) {
    for (const char* server : {"", ":80", "update.example:", "update.example:x"}) {
        os::fake::ResetMessageBoxes();
        frmUpdate without{std::string(server)};
        without.CheckForUpdate(false);
        EXPECT_TRUE(os::fake::ShownBoxes().empty());
        without.CheckForUpdate(true);
        EXPECT_EQ(OnlyBox(), "This build of Wrenlow has no update server.") << server;
    }
    EXPECT_EQ(os::fake::OutgoingCount(), 0u);
}

TEST_F(Update, TellsTheOutcomeOnlyToWhomAsked) {
    struct Case {
        std::string reply;
        const char* told;  // after a check that the user asked for; "" for nothing
    };
    const Case cases[] = {
        {kOk + "\r\nUpdate: 17 /a b\r\n", "There are no new updates at this time."},
        {"HTTP/1.1 404 Not Found\r\n\r\n", kFailed},
        {kOk + "Content-Length: 4\r\n\r\nnone", ""},
        {kOk + "\r\nUpdate: soon /a b\r\n", ""},
    };
    for (const auto& one : cases) {
        for (const bool bShow : {false, true}) {
            os::fake::ResetMessageBoxes();
            Check(bShow, one.reply);
            EXPECT_FALSE(form->Window().IsShown()) << one.reply;
            EXPECT_EQ(OnlyBox(), bShow && *one.told ? one.told : "0 boxes") << one.reply;
            EXPECT_EQ(os::fake::OpenSocketCount(), 0u) << one.reply;
        }
    }
}

TEST_F(Update, AServerThatFailsInAnyWayIsAConnectionThatFailed) {
    form->CheckForUpdate(true);
    Server().RefuseConnect();
    os::ProcessPendingEvents();
    EXPECT_EQ(OnlyBox(), kFailed);

    os::fake::ResetMessageBoxes();
    form->CheckForUpdate(true);
    Server().AcceptConnect();
    Server().Send(kOk + "\r\nUpdate: 18 /x");
    Server().Close();
    os::ProcessPendingEvents();
    EXPECT_EQ(OnlyBox(), kFailed);

    os::fake::ResetMessageBoxes();
    form->CheckForUpdate(true);  // never answers
    os::fake::AdvanceClock(frmUpdate::kCheckLimitMs - 1);
    EXPECT_EQ(OnlyBox(), "0 boxes");
    os::fake::AdvanceClock(1);
    EXPECT_EQ(OnlyBox(), kFailed);
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
}

TEST_F(Update, ASecondCheckStartsAnew) {
    form->CheckForUpdate(true);
    Server().AcceptConnect();
    Server().Feed("HTTP/1.1 200");
    Check(false, kOk + "\r\nUpdate: 17\r\n");
    EXPECT_EQ(OnlyBox(), "0 boxes");
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
}

TEST_F(Update, AnotherVersionIsOfferedAndTheConnectionClosed) {
    Check(false, kOffer);
    EXPECT_TRUE(IsBackAtTheOffer());
    EXPECT_NE(form->Window().Text("lblOffer").find("revision 18"), std::string::npos);
    User().PressEscape();
    EXPECT_FALSE(form->Window().IsShown());
}

TEST_F(Update, AsksForTheFileThenForItsPlaceAndReadsNothingMeanwhile) {
    Check(false, kOffer);
    os::fake::AnswerSaveFile(kPlace);
    os::fake::SetDuringSaveFile([&] {
        EXPECT_EQ(Server().Received(), "GET /get/setup.exe HTTP/1.1\r\nHost: update.example\r\n\r\n");
        Server().Send(kOk + "Content-Length: 3\r\n\r\nabc");
        Server().Close();
        os::ProcessPendingEvents();
        EXPECT_TRUE(User().Sees("lblConnect"));
        EXPECT_FALSE(User().Sees("cmdDownload"));
        form->CheckForUpdate(true);  // must not disturb
        EXPECT_EQ(os::fake::OutgoingCount(), 2u);
    });
    User().Press("cmdDownload");
    Server().AcceptConnect();
    os::ProcessPendingEvents();

    ASSERT_EQ(os::fake::AskedSaveFiles().size(), 1u);
    const auto& asked = os::fake::AskedSaveFiles().front();
    EXPECT_EQ(asked.title, "Save Setup File");
    EXPECT_EQ(asked.proposedName, "setup18.exe");  // the server's folders are cut off
    EXPECT_EQ(asked.owner, form->Window().Handle());
    EXPECT_EQ(os::fake::FileText(kPlace), "abc");
    EXPECT_TRUE(os::fake::IsMarkedFromInternet(kPlace));
    EXPECT_EQ(OnlyBox(), "Download complete. Close Wrenlow and run the setup.");
    EXPECT_EQ(os::fake::ShownBoxes().front().title, "Download Complete");
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
    EXPECT_FALSE(os::fake::FileText(std::string(kPlace) + ".0.tmp"));
    EXPECT_FALSE(form->Window().IsShown());
}

TEST_F(Update, WithoutALengthTheFileEndsWithTheConnection) {
    BeginDownload(kPlace);
    Server().Feed(kOk + "\r\nabc");
    EXPECT_EQ(form->Window().Text("lblProgress"), "3");
    EXPECT_FALSE(User().Sees("prgDownload"));
    Server().Close();
    os::ProcessPendingEvents();
    EXPECT_EQ(os::fake::FileText(kPlace), "abc");
}

TEST_F(Update, CancelAnywhereGoesBackToTheOfferAndLeavesNothing) {
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

    EXPECT_FALSE(os::fake::FileText(kPlace));
    EXPECT_FALSE(os::fake::FileText(std::string(kPlace) + ".0.tmp"));
    EXPECT_EQ(OnlyBox(), "0 boxes");
}

TEST_F(Update, AFailedDownloadSaysSoAndLeavesTheOldFileAlone) {
    const std::string head = kOk + "Content-Length: 6\r\n\r\nabc";
    const auto lost = [&] { Server().Reset(); };
    const auto cut = [&] {
        Server().Send(head);
        Server().Close();
    };
    const auto refused = [&] { Server().Send("HTTP/1.1 404 Not Found\r\n\r\nsorry"); };
    const auto chunked = [&] {
        Server().Send(kOk + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n");
    };
    const auto full = [&] {
        os::fake::FailWritersAfter(2, 112);
        Server().Send(head);
    };
    struct Case {
        std::function<void()> happens;
        const char* told;
    };
    const Case cases[] = {
        {lost, kFailed},
        {cut, "The connection ended before the whole file was there."},
        {refused, "The update server did not send the file."},
        {chunked, "The update server did not send the file."},
        {full, "The file could not be saved: Disk full."},
    };
    os::fake::PutFile(kPlace, "old");
    for (const auto& one : cases) {
        os::fake::ResetMessageBoxes();
        BeginDownload(kPlace);
        one.happens();
        os::ProcessPendingEvents();
        EXPECT_EQ(OnlyBox(), one.told);
        EXPECT_TRUE(IsBackAtTheOffer()) << one.told;
        EXPECT_EQ(os::fake::FileText(kPlace), "old") << one.told;
        EXPECT_FALSE(os::fake::FileText(std::string(kPlace) + ".0.tmp")) << one.told;
    }
}

TEST_F(Update, AFolderThatCannotBeWrittenToSaysSo) {
    BeginDownload("/nowhere/setup.exe");
    EXPECT_EQ(OnlyBox(), "The file could not be saved: Path not found");
    EXPECT_TRUE(IsBackAtTheOffer());
}

TEST_F(Update, AConnectionLostWhileTheUserChoosesIsToldAfterwards) {
    os::fake::SetDuringSaveFile([&] {
        Server().Reset();
        os::ProcessPendingEvents();
        EXPECT_EQ(OnlyBox(), "0 boxes");
    });
    BeginDownload(kPlace);
    EXPECT_EQ(OnlyBox(), kFailed);
    EXPECT_TRUE(IsBackAtTheOffer());
}

TEST_F(Update, TheProgramMayEndWhileTheUserChooses) {
    os::fake::SetDuringSaveFile([&] { form.reset(); });
    BeginDownload(kPlace);
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
    EXPECT_FALSE(os::fake::FileText(kPlace));
}

}  // namespace
