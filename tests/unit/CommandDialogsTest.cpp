// The dialogs that send commands, used as a person would use them.
#include "features/TextLimits.h"
#include "features/dialogs/RemoveForm.h"
#include "features/dialogs/frmAway.h"
#include "features/dialogs/frmIdle.h"
#include "features/dialogs/frmProfile.h"
#include "tests/unit/FormRig.h"

namespace {

const std::string kAway = "Set Away Message", kBack = "Remove Away Message", kIdle = "Set Idle Time",
                  kUnidle = "Unidle", kProfile = "Edit Profile";

const struct {
    std::string caption;
    void (*open)();
    const char* confirm;
    const char* chooser = "cmbScreenname";
} kDialogs[] = {
    {kAway, [] { SharedForm<frmAway>().Start(); }, "cmdSave"},
    {kBack, [] { SharedForm<frmUnAway>().Start(); }, "cmdSave"},
    {kIdle, [] { SharedForm<frmIdle>().Start(); }, "cmdIdle"},
    {kUnidle, [] { SharedForm<frmUnIdle>().Start(); }, "cmdSave"},
    {kProfile, [] { SharedForm<frmProfile>().Start(); }, "cmdSave", "cmbScreenName"},
};

// "My Name" and "Another", signed on.
struct CommandDialogs : FormRig {
    // The profile files of both users.
    static constexpr const char* kMine = "C:\\Profile\\Aim\\myname\\info.htm";
    static constexpr const char* kOther = "C:\\Profile\\Aim\\another\\info.htm";

    CommandDialogs() {
        os::WriteRegistryValue(os::RegistryHive::CurrentUser, "Volatile Environment", "APPDATA",
                               os::RegistryType::String, "C:\\Profile");
        os::fake::PutFile(kMine, "");
        os::fake::PutFile(kOther, "");
    }

    static User Open(const std::string& caption) {
        for (const auto& dialog : kDialogs) {
            if (dialog.caption == caption) dialog.open();
        }
        return User(caption);
    }

    static void StoreAwayMessages(const std::string& name, const Texts& values) {
        const auto key = "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Users\\" +
                         name + "\\IAmGoneList\\";
        for (std::size_t i = 0; i < values.size(); ++i)
            os::WriteRegistryValue(os::RegistryHive::CurrentUser, key, "GoneMsg" + std::to_string(i),
                                   os::RegistryType::String, values[i]);
    }

    // What both servers have been sent since the last call.
    void ExpectSent(const ByteString& toFirst, const ByteString& toSecond) {
        EXPECT_TRUE(first.server.TakeReceived() == toFirst);
        EXPECT_TRUE(second.server.TakeReceived() == toSecond);
    }

    Rig::Pair first = rig.SignOn("My Name");
    Rig::Pair second = rig.SignOn("Another");
};

}  // namespace

TEST_F(CommandDialogs, OpenOnceAndCancelSendsNothing) {
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
    ExpectSent("", "");
    EXPECT_EQ(TakeBoxes(), Texts());
}

TEST_F(CommandDialogs, ANameThatSignedOffIsRefusedAndNobodyElseGetsItsCommand) {
    for (const auto& dialog : kDialogs) Open(dialog.caption).Choose(dialog.chooser, 2);
    User(kIdle).Type("txtIdle", "5");
    modSocket::Connection(1)->CloseConnection();
    for (const auto& dialog : kDialogs) {
        User(dialog.caption).Press(dialog.confirm);
        EXPECT_EQ(TakeBoxes(), Texts{"The screen name \"Another\" is not signed on any more."})
            << dialog.caption;
        EXPECT_TRUE(IsShown(dialog.caption)) << dialog.caption;
    }
    ExpectSent("", "");
    EXPECT_TRUE(Rig::Reports().empty());
}

TEST_F(CommandDialogs, AllSkipsWhoSignedOffAndSaysWhenNobodyIsLeft) {
    auto unidle = Open(kUnidle);
    auto back = Open(kBack);
    modSocket::Connection(0)->CloseConnection();
    unidle.Press("cmdSave");
    ExpectSent("", Idle(2, 0));
    modSocket::Connection(1)->CloseConnection();
    back.Press("cmdSave");
    EXPECT_TRUE(ToldNotSignedOn());
}

TEST_F(CommandDialogs, AwayGoesToAllOrToTheChosenNameWithItsTextUnchanged) {
    auto away = Open(kAway);
    EXPECT_EQ(away.Window().EntryCount("cmbScreenname"), 3);
    EXPECT_EQ(away.Window().Text("cmbScreenname"), "(all)");
    EXPECT_EQ(away.Window().Entry("cmbScreenname", 1), "My Name (My Name)");
    away.Type("txtAway", "I'm <b>gone</b>\r\nfor now");
    away.Press("cmdSave");
    ExpectSent(Away(2, "I'm <b>gone</b>\r\nfor now"), Away(2, "I'm <b>gone</b>\r\nfor now"));
    EXPECT_FALSE(IsShown(kAway));

    Open(kAway);
    EXPECT_EQ(away.Window().Text("txtAway"), "") << "the text of last time is still there";
    away.Choose("cmbScreenname", 2);
    away.Type("txtAway", "lunch");
    away.Press("cmdSave");
    ExpectSent("", Away(3, "lunch"));
}

TEST_F(CommandDialogs, AwayOffersTheMessagesThatTheClientKeeps) {
    StoreAwayMessages("myname", {"<title>Lunch</title>Eating <b>now</b>", "<title></title>",
                                 std::string(1'024, 'x'), "no title", "", "<title>Never</title>read"});
    auto away = Open(kAway);
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
    Open(kAway).Type("txtAway", "half a te");
    SharedForm<frmAway>().Start("gone");
    ExpectSent(Away(2, "gone"), Away(2, "gone"));
    EXPECT_EQ(User(kAway).Window().Text("txtAway"), "half a te");
    SharedForm<frmUnAway>().Start(true);
    ExpectSent(Away(3, ""), Away(3, ""));
    EXPECT_FALSE(IsShown(kBack));
    EXPECT_EQ(TakeBoxes(), Texts());

    for (std::size_t slot : {0u, 1u}) modSocket::Connection(slot)->CloseConnection();
    SharedForm<frmAway>().Start("gone");
    EXPECT_TRUE(ToldNotSignedOn());
    SharedForm<frmUnAway>().Start(true);
    EXPECT_TRUE(ToldNotSignedOn());
}

TEST_F(CommandDialogs, IdleRefusesInItsOrderAndStaysOpen) {
    const std::pair<std::string, Texts> refusals[] = {
        {"Enter a valid number.", {"", "abc", "5x", ".", "1 2", "--1", "+7", "1,000,000", "1e3"}},
        {"Enter a number between 0 and 65535 inclusive.",
         {"-1", "65536", "-0.5", "65535.5", "99999999999999999999"}},
        {"Enter a whole number.", {"2.5", "2,5", "1,000", "2.0"}},
        {"AIM can tell an idle time of 1092 minutes at most. Enter a number up to 1092.", {"1093", "65535"}},
    };
    auto idle = Open(kIdle);
    EXPECT_TRUE(idle.HasFocus("txtIdle"));
    for (const auto& [refusal, texts] : refusals) {
        for (const auto& text : texts) {
            idle.Type("txtIdle", text);
            idle.Press("cmdIdle");
            EXPECT_EQ(TakeBoxes(), Texts{refusal}) << text;
            ASSERT_TRUE(IsShown(kIdle)) << text;
        }
    }
    ExpectSent("", "");
    EXPECT_TRUE(Rig::Reports().empty());
}

TEST_F(CommandDialogs, IdleTakesDigits) {
    const std::pair<const char*, std::int32_t> cases[] = {{"0", 0}, {" 5 ", 5}, {"010", 10}, {"1092", 1092}};
    std::int32_t sequence = 2;
    for (const auto& [text, minutes] : cases) {
        auto idle = Open(kIdle);
        EXPECT_EQ(idle.Window().Text("txtIdle"), "");
        idle.Type("txtIdle", text);
        idle.Press("Check1");  // does nothing
        idle.PressEnter("txtIdle");
        ExpectSent(Idle(sequence, minutes), Idle(sequence, minutes));
        EXPECT_FALSE(IsShown(kIdle)) << text;
        ++sequence;
    }
}

TEST_F(CommandDialogs, ProfileReadsWhatTheClientKeeps) {
    rig.SignOn("No Folder");
    os::fake::PutFile(kMine, "\r\n\r\nline one\r\n\r\nline <b>three</b>\r\n");
    auto profile = Open(kProfile);
    EXPECT_EQ(profile.Window().Text("txtProfile"), "") << "(all) has no profile of its own";
    const std::string lines = "line one\r\n\r\nline <b>three</b>";
    for (const auto& [choice, text, what] :
         {std::tuple{1, lines, "a file"}, {3, lines, "no file"}, {2, std::string(), "an empty file"}}) {
        profile.Choose("cmbScreenName", choice);
        EXPECT_EQ(profile.Window().Text("txtProfile"), text) << what;
    }
}

TEST_F(CommandDialogs, ProfileIsSentAndKeptUnlessTemporary) {
    auto profile = Open(kProfile);
    profile.Type("txtProfile", "a\r\nb");
    profile.Press("cmdSave");
    ExpectSent(Profile(2, "a\r\nb"), Profile(2, "a\r\nb"));
    for (const char* file : {kMine, kOther}) EXPECT_EQ(os::fake::FileText(file), "a\r\nb\r\n");

    Open(kProfile);
    profile.Choose("cmbScreenName", 2);
    profile.Type("txtProfile", "for today");
    profile.Press("chkTemp");
    profile.Press("cmdSave");
    ExpectSent("", Profile(3, "for today"));
    EXPECT_EQ(os::fake::FileText(kOther), "a\r\nb\r\n");
    EXPECT_EQ(Open(kProfile).Window().Value("chkTemp"), 0);
}

TEST_F(CommandDialogs, AProfileThatCannotBeKeptForOneIsStillKeptForTheOthers) {
    os::fake::FailWrites(kMine, 5);
    auto profile = Open(kProfile);
    profile.Type("txtProfile", "new");
    profile.Press("cmdSave");
    ExpectSent(Profile(2, "new"), Profile(2, "new"));
    EXPECT_EQ(os::fake::FileText(kOther), "new\r\n");
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].number, 5);
}

TEST_F(CommandDialogs, NoTextIsCutSilentlyAndNoneGoesBeyondWhatTheServerTakes) {
    // What the servers say at sign-on: 9,000 bytes the one, 1,024 the other.
    const auto head = "00 02 00 03 00 00 00 00 00 01"_hex;
    first.server.Feed(Frame(2, 2, head + "00 01 00 02 23 28 00 02 00 02 00 10"_hex));
    second.server.Feed(Frame(2, 2, head + "00 02 00 02 00 10 00 01 00 02 04 00"_hex));
    const std::pair<int, std::size_t> choices[] = {{1, 9'000}, {0, 1'024}, {2, 1'024}};
    std::string text;
    while (text.size() < 10'000) text += "a line of a long away message, written with patience\r\n";
    auto away = Open(kAway);
    for (const auto& [choice, limit] : choices) {
        const auto longest = text.substr(0, limit - 1) + "!";
        away.Choose("cmbScreenname", choice);
        away.Type("txtAway", longest);
        EXPECT_EQ(TakeBoxes(), Texts());
        away.Type("txtAway", longest + "more");
        const Texts said{"The text can be at most " + std::string(limit > 2'000 ? "9,000" : "1,024") +
                         " characters long. What goes beyond was left out."};
        EXPECT_EQ(TakeBoxes(), said);
    }
    away.Choose("cmbScreenname", 1);
    away.Type("txtAway", text.substr(0, 1'025));
    away.Choose("cmbScreenname", 2);
    away.Press("cmdSave");
    EXPECT_EQ(TakeBoxes(), Texts{"The text can be at most 1,024 characters long. Please shorten it."});
    EXPECT_TRUE(IsShown(kAway));
    away.Type("txtAway", text.substr(0, 1'024));
    away.Press("cmdSave");
    ExpectSent("", Away(2, text.substr(0, 1'024)));
}

TEST_F(CommandDialogs, AStoredTextThatIsTooLongIsNotOpenedAndNotWiped) {
    const std::string kept(TextLimits::kUnsaid + 1, 'x');
    os::fake::PutFile(kMine, kept);
    auto profile = Open(kProfile);
    profile.Choose("cmbScreenName", 1);
    EXPECT_EQ(TakeBoxes(),
              Texts{"The profile in AIM is longer than the 8,000 characters that the server takes. "
                    "It is not opened here and stays as it is."});
    EXPECT_EQ(profile.Window().Text("txtProfile"), "");
    os::fake::boxes.answers = {os::BoxResult::No};
    profile.Press("cmdSave");
    EXPECT_EQ(TakeBoxes().size(), 1u);
    EXPECT_EQ(os::fake::FileText(kMine), kept);
    ExpectSent("", "");
}

TEST_F(CommandDialogs, AnEmptyProfileForEverybodyIsAskedAboutFirst) {
    os::fake::PutFile(kMine, "mine");
    auto profile = Open(kProfile);
    os::fake::boxes.answers = {os::BoxResult::No};
    profile.Press("cmdSave");
    EXPECT_EQ(TakeBoxes(),
              Texts{"The profile of everybody who is signed on will be empty. Is that what you want?"});
    EXPECT_TRUE(IsShown(kProfile));
    EXPECT_EQ(os::fake::FileText(kMine), "mine");
    ExpectSent("", "");
    profile.Press("cmdSave");  // and yes
    ExpectSent(Profile(2, ""), Profile(2, ""));
}

TEST_F(CommandDialogs, ANameMayBeginWithAParenthesis) {
    auto third = rig.SignOn("(me) (x)");
    for (const auto& [caption, text] : {std::pair{kAway, "txtAway"}, {kProfile, "txtProfile"}}) {
        auto dialog = Open(caption);
        dialog.Type(text, "t");
        dialog.Press("cmdSave");
    }
    EXPECT_EQ(third.server.TakeReceived(), Away(2, "t") + Profile(3, "t"));
    EXPECT_EQ(first.server.TakeReceived(), Away(2, "t") + Profile(3, "t"));
}

TEST_F(CommandDialogs, WithOneNameTheTextHasTheFocus) {
    EXPECT_TRUE(Open(kAway).HasFocus("cmbScreenname"));
    User(kAway).Press("cmdCancel");
    modSocket::Connection(1)->CloseConnection();
    EXPECT_TRUE(Open(kAway).HasFocus("txtAway"));
    EXPECT_TRUE(Open(kProfile).HasFocus("txtProfile"));
}

TEST_F(CommandDialogs, AnOriginalNameCannotLeaveItsKeyInTheRegistry) {
    rig.SignOn("..\\x");
    StoreAwayMessages("..\\x", {"<title>Elsewhere</title>text"});
    auto away = Open(kAway);
    away.Choose("cmbScreenname", 3);
    EXPECT_EQ(away.Window().EntryCount("cmbAway"), 0);
}
