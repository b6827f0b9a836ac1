// The dialogs that send commands, used as a person would use them.
#include "app/services/SharedForm.h"
#include "features/frmAway.h"
#include "features/frmIdle.h"
#include "features/frmProfile.h"
#include "features/frmUnAway.h"
#include "features/frmUnIdle.h"
#include "tests/unit/FormRig.h"

namespace {

struct CommandDialogs : FormRig {
    // The profile files of both users.
    static constexpr const char* kMine = "C:\\Profile\\Aim\\myname\\info.htm";
    static constexpr const char* kOther = "C:\\Profile\\Aim\\another\\info.htm";

    static void UseClientFolders() {
        os::WriteRegistryValue(os::RegistryHive::CurrentUser, "Volatile Environment", "APPDATA",
                               os::RegistryType::String, "C:\\Profile");
        os::fake::PutFile(kMine, "");
        os::fake::PutFile(kOther, "");
    }

    static void StoreAwayMessages(const std::string& name, const std::vector<std::string>& values) {
        const auto key = "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Users\\" +
                         name + "\\IAmGoneList\\";
        for (std::size_t i = 0; i < values.size(); ++i)
            os::WriteRegistryValue(os::RegistryHive::CurrentUser, key, "GoneMsg" + std::to_string(i),
                                   os::RegistryType::String, values[i]);
    }
};

const struct {
    const char* caption;
    void (*open)();
    const char* confirm;
} kDialogs[] = {
    {"Set Away Message", [] { SharedForm<frmAway>().Start(); }, "cmdSave"},
    {"Remove Away Message", [] { SharedForm<frmUnAway>().Start(); }, "cmdSave"},
    {"Set Idle Time", [] { SharedForm<frmIdle>().Start(); }, "cmdIdle"},
    {"Unidle", [] { SharedForm<frmUnIdle>().Start(); }, "cmdSave"},
    {"Edit Profile", [] { SharedForm<frmProfile>().Start(); }, "cmdSave"},
};

}  // namespace

TEST_F(CommandDialogs, DoNotOpenWhenNobodyIsSignedOn) {
    rig.ConnectTalking();
    for (const auto& dialog : kDialogs) {
        dialog.open();
        EXPECT_TRUE(ToldNotSignedOn()) << dialog.caption;
        EXPECT_FALSE(IsShown(dialog.caption)) << dialog.caption;
    }
}

TEST_F(CommandDialogs, OpenOnceAndCancelSendsNothing) {
    auto [client, server] = rig.SignOn("My Name");
    for (const auto& dialog : kDialogs) {
        dialog.open();
        dialog.open();
        EXPECT_EQ(os::fake::ShownDialogCount(dialog.caption), 1) << dialog.caption;
        User(dialog.caption).Press("cmdCancel");
        EXPECT_FALSE(IsShown(dialog.caption)) << dialog.caption;
        dialog.open();
        User(dialog.caption).PressEscape();
        EXPECT_FALSE(IsShown(dialog.caption)) << dialog.caption;
    }
    EXPECT_EQ(server.TakeReceived(), "");
    EXPECT_TRUE(TakeBoxes().empty());
}

TEST_F(CommandDialogs, ANameThatSignedOffIsRefusedAndNobodyElseGetsItsCommand) {
    auto first = rig.SignOn("My Name");
    rig.SignOn("Another");
    for (const auto& dialog : kDialogs) {
        dialog.open();
        User(dialog.caption)
            .Choose(dialog.caption == std::string("Edit Profile") ? "cmbScreenName" : "cmbScreenname", 2);
    }
    User("Set Idle Time").Type("txtIdle", "5");
    modSocket::Connection(1)->CloseConnection();
    for (const auto& dialog : kDialogs) {
        User(dialog.caption).Press(dialog.confirm);
        EXPECT_EQ(TakeBoxes(),
                  std::vector<std::string>{"The screen name \"Another\" is not signed on any more."})
            << dialog.caption;
        EXPECT_TRUE(IsShown(dialog.caption)) << dialog.caption;
    }
    EXPECT_EQ(first.server.TakeReceived(), "");
    EXPECT_TRUE(Rig::Reports().empty());
}

TEST_F(CommandDialogs, AllSkipsWhoSignedOffAndSaysWhenNobodyIsLeft) {
    rig.SignOn("My Name");
    auto second = rig.SignOn("Another");
    SharedForm<frmUnIdle>().Start();
    SharedForm<frmUnAway>().Start();
    modSocket::Connection(0)->CloseConnection();
    User("Unidle").Press("cmdSave");
    EXPECT_EQ(second.server.TakeReceived(), Idle(2, 0));
    modSocket::Connection(1)->CloseConnection();
    User("Remove Away Message").Press("cmdSave");
    EXPECT_TRUE(ToldNotSignedOn());
}

TEST_F(CommandDialogs, AwayGoesToAllOrToTheChosenNameWithItsTextUnchanged) {
    auto first = rig.SignOn("My Name");
    auto second = rig.SignOn("Another");
    SharedForm<frmAway>().Start();
    User away("Set Away Message");
    EXPECT_EQ(away.Window().EntryCount("cmbScreenname"), 3);
    EXPECT_EQ(away.Window().Text("cmbScreenname"), "(all)");
    EXPECT_EQ(away.Window().Entry("cmbScreenname", 1), "My Name (My Name)");
    away.Type("txtAway", "I'm <b>gone</b>\r\nfor now");
    away.Press("cmdSave");
    EXPECT_EQ(first.server.TakeReceived(), Away(2, "I'm <b>gone</b>\r\nfor now"));
    EXPECT_EQ(second.server.TakeReceived(), Away(2, "I'm <b>gone</b>\r\nfor now"));
    EXPECT_FALSE(IsShown("Set Away Message"));

    SharedForm<frmAway>().Start();
    EXPECT_EQ(away.Window().Text("txtAway"), "") << "the text of last time is still there";
    away.Choose("cmbScreenname", 2);
    away.Type("txtAway", "lunch");
    away.Press("cmdSave");
    EXPECT_EQ(first.server.TakeReceived(), "");
    EXPECT_EQ(second.server.TakeReceived(), Away(3, "lunch"));
}

TEST_F(CommandDialogs, AwayOffersTheMessagesThatTheClientKeeps) {
    rig.SignOn("My Name");
    rig.SignOn("Another");
    StoreAwayMessages("myname", {"<title>Lunch</title>Eating <b>now</b>", "<title></title>", "no title", "",
                                 "<title>Never</title>read"});
    SharedForm<frmAway>().Start();
    User away("Set Away Message");
    EXPECT_EQ(away.Window().EntryCount("cmbAway"), 0) << "no name is chosen yet";
    away.Choose("cmbScreenname", 1);
    ASSERT_EQ(away.Window().EntryCount("cmbAway"), 3);
    EXPECT_EQ(away.Window().Entry("cmbAway", 0), "Lunch");
    EXPECT_EQ(away.Window().Entry("cmbAway", 2), "no title");
    away.Choose("cmbAway", 0);
    EXPECT_EQ(away.Window().Text("txtAway"), "Eating <b>now</b>");
    away.Choose("cmbScreenname", 0);
    EXPECT_EQ(away.Window().EntryCount("cmbAway"), 3) << "(all) leaves the list as it was";
    away.Choose("cmbScreenname", 2);
    EXPECT_EQ(away.Window().EntryCount("cmbAway"), 0);
    EXPECT_EQ(away.Window().Text("txtAway"), "Eating <b>now</b>");
}

TEST_F(CommandDialogs, AHotkeyActsAtOnceAndShowsNothing) {
    SharedForm<frmAway>().Start("gone");
    EXPECT_TRUE(ToldNotSignedOn());
    SharedForm<frmUnAway>().Start(true);
    EXPECT_TRUE(ToldNotSignedOn());

    auto first = rig.SignOn("My Name");
    auto second = rig.SignOn("Another");
    SharedForm<frmAway>().Start();
    User("Set Away Message").Type("txtAway", "half a te");
    SharedForm<frmAway>().Start("gone");
    EXPECT_EQ(first.server.TakeReceived(), Away(2, "gone"));
    EXPECT_EQ(second.server.TakeReceived(), Away(2, "gone"));
    EXPECT_EQ(User("Set Away Message").Window().Text("txtAway"), "half a te");
    SharedForm<frmUnAway>().Start(true);
    EXPECT_EQ(first.server.TakeReceived(), Away(3, ""));
    EXPECT_EQ(second.server.TakeReceived(), Away(3, ""));
    EXPECT_FALSE(IsShown("Remove Away Message"));
    EXPECT_TRUE(TakeBoxes().empty());
}

TEST_F(CommandDialogs, BackClearsTheAwayMessage) {
    auto [client, server] = rig.SignOn("My Name");
    SharedForm<frmUnAway>().Start();
    User("Remove Away Message").Press("cmdSave");
    EXPECT_EQ(server.TakeReceived(), Away(2, ""));
}

TEST_F(CommandDialogs, IdleRefusesInItsOrderAndStaysOpen) {
    auto [client, server] = rig.SignOn("My Name");
    const std::string notANumber = "Enter a valid number.";
    const std::string outOfRange = "Enter a number between 0 and 65535 inclusive.";
    const std::string notWhole = "Enter a whole number.";
    const struct {
        const char* text;
        std::string refusal;
    } cases[] = {
        {"", notANumber},
        {"abc", notANumber},
        {"5x", notANumber},
        {".", notANumber},
        {"1 2", notANumber},
        {"--1", notANumber},
        {"1,000,000", notANumber},
        {"1e3", notANumber},
        {"-1", outOfRange},
        {"65536", outOfRange},
        {"-0.5", outOfRange},
        {"65535.5", outOfRange},
        {"99999999999999999999", outOfRange},
        {"2.5", notWhole},
        {"2,5", notWhole},
    };
    SharedForm<frmIdle>().Start();
    User idle("Set Idle Time");
    EXPECT_TRUE(idle.HasFocus("txtIdle"));
    for (const auto& [text, refusal] : cases) {
        idle.Type("txtIdle", text);
        idle.Press("cmdIdle");
        EXPECT_EQ(TakeBoxes(), std::vector<std::string>{refusal}) << text;
        ASSERT_TRUE(IsShown("Set Idle Time")) << text;
    }
    EXPECT_EQ(server.TakeReceived(), "");
}

TEST_F(CommandDialogs, IdleTakesWhatAPersonCallsAWholeNumber) {
    auto [client, server] = rig.SignOn("My Name");
    const struct {
        const char* text;
        std::int32_t minutes;
    } cases[] = {{"0", 0}, {" 5 ", 5}, {"+7", 7}, {"010", 10}, {"2.0", 2}, {"1092", 1092}, {"-0", 0}};
    std::int32_t sequence = 2;
    for (const auto& [text, minutes] : cases) {
        SharedForm<frmIdle>().Start();
        User idle("Set Idle Time");
        EXPECT_EQ(idle.Window().Text("txtIdle"), "");
        idle.Type("txtIdle", text);
        idle.Press("Check1");
        idle.PressEnter("txtIdle");
        EXPECT_EQ(server.TakeReceived(), Idle(sequence++, minutes)) << text;
        EXPECT_FALSE(IsShown("Set Idle Time")) << text;
    }
}

TEST_F(CommandDialogs, IdleBeyondWhatTheFrameHoldsIsReportedByTheRegistry) {
    auto [client, server] = rig.SignOn("My Name");
    SharedForm<frmIdle>().Start();
    User idle("Set Idle Time");
    idle.Type("txtIdle", "1093");
    idle.Press("cmdIdle");
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].where, "modSocket:SetIdle");
    EXPECT_EQ(server.TakeReceived(), "");
}

TEST_F(CommandDialogs, UnidleRemovesTheIdleTime) {
    auto first = rig.SignOn("My Name");
    auto second = rig.SignOn("Another");
    SharedForm<frmUnIdle>().Start();
    User("Unidle").Choose("cmbScreenname", 1);
    User("Unidle").Press("cmdSave");
    EXPECT_EQ(first.server.TakeReceived(), Idle(2, 0));
    EXPECT_EQ(second.server.TakeReceived(), "");
}

TEST_F(CommandDialogs, ProfileReadsWhatTheClientKeeps) {
    UseClientFolders();
    rig.SignOn("My Name");
    rig.SignOn("Another");
    rig.SignOn("No Folder");
    os::fake::PutFile(kMine, "\r\n\r\nline one\r\n\r\nline <b>three</b>\r\n");
    SharedForm<frmProfile>().Start();
    User profile("Edit Profile");
    EXPECT_EQ(profile.Window().Text("txtProfile"), "") << "(all) has no profile of its own";
    profile.Choose("cmbScreenName", 1);
    EXPECT_EQ(profile.Window().Text("txtProfile"), "line one\r\n\r\nline <b>three</b>");
    profile.Choose("cmbScreenName", 3);
    EXPECT_EQ(profile.Window().Text("txtProfile"), "line one\r\n\r\nline <b>three</b>") << "no file";
    profile.Choose("cmbScreenName", 2);
    EXPECT_EQ(profile.Window().Text("txtProfile"), "") << "an empty file";
}

TEST_F(CommandDialogs, ProfileIsSentAndKeptUnlessTemporary) {
    UseClientFolders();
    auto first = rig.SignOn("My Name");
    auto second = rig.SignOn("Another");
    SharedForm<frmProfile>().Start();
    User profile("Edit Profile");
    profile.Type("txtProfile", "a\r\nb");
    profile.Press("cmdSave");
    EXPECT_EQ(first.server.TakeReceived(), Profile(2, "a\r\nb"));
    EXPECT_EQ(second.server.TakeReceived(), Profile(2, "a\r\nb"));
    EXPECT_EQ(os::fake::FileText(kMine), "a\r\nb\r\n");
    EXPECT_EQ(os::fake::FileText(kOther), "a\r\nb\r\n");

    SharedForm<frmProfile>().Start();
    profile.Choose("cmbScreenName", 2);
    profile.Type("txtProfile", "for today");
    profile.Press("chkTemp");
    profile.Press("cmdSave");
    EXPECT_EQ(first.server.TakeReceived(), "");
    EXPECT_EQ(second.server.TakeReceived(), Profile(3, "for today"));
    EXPECT_EQ(os::fake::FileText(kOther), "a\r\nb\r\n");
    SharedForm<frmProfile>().Start();
    EXPECT_EQ(profile.Window().Value("chkTemp"), 0);
}

TEST_F(CommandDialogs, AProfileThatCannotBeKeptForOneIsStillKeptForTheOthers) {
    UseClientFolders();
    auto first = rig.SignOn("My Name");
    rig.SignOn("Another");
    os::fake::FailWrites(kMine, 5);
    SharedForm<frmProfile>().Start();
    User("Edit Profile").Type("txtProfile", "new");
    User("Edit Profile").Press("cmdSave");
    EXPECT_EQ(first.server.TakeReceived(), Profile(2, "new"));
    EXPECT_EQ(os::fake::FileText(kOther), "new\r\n");
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].number, 5);
}

TEST_F(CommandDialogs, NoTextIsCutSilently) {
    UseClientFolders();
    auto [client, server] = rig.SignOn("My Name");
    std::string longest;
    while (longest.size() < 65'000) longest += "a line of a long away message, written with patience\r\n";
    longest.resize(65'000, '!');
    SharedForm<frmAway>().Start();
    User away("Set Away Message");
    away.Type("txtAway", longest);
    EXPECT_TRUE(TakeBoxes().empty());
    away.Type("txtAway", longest + "more");
    ASSERT_EQ(TakeBoxes().size(), 1u);
    away.Type("txtAway", longest);
    away.Press("cmdSave");
    EXPECT_EQ(server.TakeReceived(), Away(2, longest));

    // A kept profile can be longer: it is shown as it is, but not sent.
    os::fake::PutFile(kMine, longest + "\r\n" + std::string(100, 'x'));
    SharedForm<frmProfile>().Start();
    User profile("Edit Profile");
    profile.Choose("cmbScreenName", 1);
    profile.Press("cmdSave");
    EXPECT_EQ(TakeBoxes().size(), 1u);
    EXPECT_TRUE(IsShown("Edit Profile"));
    EXPECT_EQ(server.TakeReceived(), "");
}

TEST_F(CommandDialogs, AnOriginalNameCannotLeaveItsKeyInTheRegistry) {
    auto [client, server] = rig.SignOn("..\\x");
    StoreAwayMessages("..\\x", {"<title>Elsewhere</title>text"});
    SharedForm<frmAway>().Start();
    User("Set Away Message").Choose("cmbScreenname", 1);
    EXPECT_EQ(User("Set Away Message").Window().EntryCount("cmbAway"), 0);
}
