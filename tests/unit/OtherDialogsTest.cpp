// The replacer, the bug form, the error window, and the texts of all dialogs.
#include "app/services/frmError.h"
#include "desktop/frmBug.h"
#include "features/frmAway.h"
#include "features/frmIdle.h"
#include "features/frmProfile.h"
#include "features/frmSNReplacer.h"
#include "features/frmUnAway.h"
#include "features/frmUnIdle.h"
#include "features/modSNReplace.h"
#include "tests/unit/FormRig.h"

namespace {

using Texts = std::vector<std::string>;

struct Replacer : FormRig {
    static constexpr const char* kFile = "/program\\repl.dat";

    // The dialog, open for somebody who is signed on.
    User Open() {
        rig.SignOn("My Name");
        SharedForm<frmSNReplacer>().Start();
        return User("Screenname Replacer");
    }
    static Texts Rows(const User& user) {
        Texts rows;
        for (int row = 0; row < user.Window().RowCount("lvNames"); ++row)
            rows.push_back(user.Window().Cell("lvNames", row, 0) + "=" +
                           user.Window().Cell("lvNames", row, 1));
        return rows;
    }
    static void Add(User& user, const std::string& screenName, const std::string& replacement) {
        user.Type("txtScreenname", screenName);
        user.Type("txtReplace", replacement);
        user.Press("cmdAdd");
    }
};

struct OtherDialogs : FormRig {};

}  // namespace

TEST_F(Replacer, DoesNotOpenWhenNobodyIsSignedOn) {
    SharedForm<frmSNReplacer>().Start();
    EXPECT_TRUE(ToldNotSignedOn());
    EXPECT_FALSE(IsShown("Screenname Replacer"));
}

TEST_F(Replacer, EditsTheListOfTheFile) {
    os::fake::PutFile(kFile, "asdf1234\r\nFred\r\nQwerty 9\r\nWilma\r\nzx\r\nDino\r\n");
    auto user = Open();
    EXPECT_EQ(user.Window().EntryCount("cmbScreenname"), 1) << "no (all) here";
    EXPECT_EQ(Rows(user), (Texts{"asdf1234=Fred", "Qwerty 9=Wilma", "zx=Dino"}));
    user.SelectRows("lvNames", {0, 2});
    user.Press("cmdRemove");
    Add(user, "New Name", "Pebbles ");
    EXPECT_EQ(user.Window().Text("txtScreenname") + user.Window().Text("txtReplace"), "");
    EXPECT_TRUE(user.HasFocus("txtScreenname"));
    user.Press("cmdSave");
    EXPECT_EQ(os::fake::FileText(kFile), "Qwerty 9\r\nWilma\r\nNew Name\r\nPebbles \r\n");
    EXPECT_FALSE(IsShown("Screenname Replacer"));
}

TEST_F(Replacer, EnterInTheAliasAddsAndDoesNotSave) {
    auto user = Open();
    user.Type("txtScreenname", "asdf1234");
    user.PressEnter("txtScreenname");
    EXPECT_TRUE(user.HasFocus("txtReplace"));
    user.Type("txtReplace", "Fred");
    user.PressEnter("txtReplace");
    EXPECT_EQ(Rows(user), Texts{"asdf1234=Fred"});
    EXPECT_TRUE(IsShown("Screenname Replacer"));
    EXPECT_EQ(os::fake::FileText(kFile), std::nullopt);
}

TEST_F(Replacer, RefusesANameThatIsInTheListOnEitherSide) {
    os::fake::PutFile(kFile, "asdf 1234\r\nFred\r\n");
    auto user = Open();
    const Texts refusal{"The screenname \"asdf 1234\" is already being replaced by \"Fred\"."};
    for (const char* name : {"AsDf1234", "asdf1234", "FRED", "f r e d"}) {
        Add(user, name, "Barney");
        EXPECT_EQ(os::fake::ShownBoxes().back().icon, os::BoxIcon::Error);
        EXPECT_EQ(TakeBoxes(), refusal) << name;
        EXPECT_EQ(user.Window().Text("txtReplace"), "Barney") << "what was typed is lost";
    }
    EXPECT_EQ(Rows(user).size(), 1u);
}

TEST_F(Replacer, AnEmptyHalfIsAskedForInsteadOfAdded) {
    auto user = Open();
    Add(user, "  ", "Fred");
    EXPECT_TRUE(user.HasFocus("txtScreenname"));
    Add(user, "asdf1234", "");
    EXPECT_TRUE(user.HasFocus("txtReplace"));
    EXPECT_TRUE(Rows(user).empty());
}

TEST_F(Replacer, TakesNoMoreThanItsReadersRead) {
    std::string file;
    for (std::size_t i = 0; i < modSNReplace::kMostPairs; ++i)
        file += "name" + std::to_string(i) + "\r\nx\r\n";
    os::fake::PutFile(kFile, file);
    auto user = Open();
    Add(user, "one more", "y");
    EXPECT_EQ(TakeBoxes().size(), 1u);
    EXPECT_EQ(Rows(user).size(), modSNReplace::kMostPairs);
}

TEST_F(Replacer, AFailedSaveLosesNothing) {
    os::fake::PutFile(kFile, "old\r\nolder\r\n");
    auto user = Open();
    Add(user, "asdf1234", "Fred");
    os::fake::FailWrites(kFile, 112);
    user.Press("cmdSave");
    EXPECT_EQ(TakeBoxes().size(), 1u);
    EXPECT_TRUE(IsShown("Screenname Replacer"));
    EXPECT_EQ(Rows(user), (Texts{"old=older", "asdf1234=Fred"}));
    EXPECT_EQ(os::fake::FileText(kFile), "old\r\nolder\r\n");
    os::fake::FailWrites(kFile, 0);
    user.Press("cmdSave");
    EXPECT_EQ(os::fake::FileText(kFile), "old\r\nolder\r\nasdf1234\r\nFred\r\n");
}

TEST_F(Replacer, AFileThatCannotBeReadIsNotOpenedForOverwriting) {
    os::fake::PutFile(kFile, "old\r\nolder\r\n");
    rig.SignOn("My Name");
    Rig::Reports().clear();
    os::fake::FailReads(kFile, true);
    SharedForm<frmSNReplacer>().Start();
    EXPECT_FALSE(IsShown("Screenname Replacer"));
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].where, "frmSNReplacer:Start");
}

TEST_F(OtherDialogs, TheBugFormForgetsWhatWasTyped) {
    for (const char* button : {"cmdSubmit", "cmdCancel"}) {
        SharedForm<frmBug>().Start();
        User bug("Reprot A Bug");
        for (const char* box : {"txtDesc", "txtSpecs", "txtContact", "txtComments"}) bug.Type(box, "secret");
        bug.Press(button);
        EXPECT_FALSE(IsShown("Reprot A Bug"));
        for (const char* box : {"txtDesc", "txtSpecs", "txtContact", "txtComments"})
            EXPECT_EQ(bug.Window().Text(box), "");
    }
    EXPECT_EQ(os::fake::WriteCount(), 0u);
    EXPECT_TRUE(TakeBoxes().empty());
}

TEST_F(OtherDialogs, EachErrorHasItsOwnWindowWhichItsOwnerDropsWhenClosed) {
    struct Owner {
        std::unique_ptr<frmError> first = std::make_unique<frmError>();
        std::unique_ptr<frmError> second = std::make_unique<frmError>();
        void Drop(frmError& closed) { (&closed == first.get() ? first : second).reset(); }
    } owner;
    for (auto* form : {&owner.first, &owner.second}) (*form)->Closed.Bind<&Owner::Drop>(owner);
    owner.first->Start("Invalid procedure call or argument", "5", "modSystem:GetSNPath", 0);
    owner.second->Start("second", "6", "modSystem:doErr", 7);
    EXPECT_EQ(os::fake::ShownDialogCount("Wrenlow"), 2);
    EXPECT_EQ(User("Wrenlow").Window().Text("lblError"), "6: second\r\nat: modSystem:doErr: 7");
    User("Wrenlow").Press("cmdOK");
    EXPECT_EQ(owner.second, nullptr);
    EXPECT_EQ(User("Wrenlow").Window().Text("lblError"),
              "5: Invalid procedure call or argument\r\nat: modSystem:GetSNPath: 0");
    User("Wrenlow").PressEscape();
    EXPECT_EQ(owner.first, nullptr);
    EXPECT_EQ(os::fake::ShownDialogCount("Wrenlow"), 0);
}

// Misspellings included: people know the windows by these texts.
TEST_F(OtherDialogs, AllTextsStandToTheLetter) {
    rig.SignOn("My Name");
    SharedForm<frmAway>().Start();
    SharedForm<frmUnAway>().Start();
    SharedForm<frmIdle>().Start();
    SharedForm<frmUnIdle>().Start();
    SharedForm<frmProfile>().Start();
    SharedForm<frmSNReplacer>().Start();
    SharedForm<frmBug>().Start();
    frmError error;
    error.Start("", "", "", 0);

    const std::string chooser = "Screen name:";
    const std::pair<std::string, Texts> windows[] = {
        {"Set Away Message",
         {chooser, "Pre-defined away messages (from AIM)", "Away message text", "Away!", "Cancel"}},
        {"Remove Away Message",
         {"Choose the screen name you wish to have the away message removed, and click Back!", chooser,
          "Note: if the away message was set from AIM itself, AIM's away dialog will still be shown, people "
          "will still get an auto-response, and you  will not be able to send any IMs. (until you click Back "
          "on AIM's away dialog)",
          "Back!", "Cancel"}},
        {"Set Idle Time",
         {chooser, "No. of idle minutes: (max 65535)", "Prevent AIM from controlling idle time", "Idle",
          "Cancel"}},
        {"Unidle",
         {"Choose the screen name you wish to have the idle time removed, and click Unidle", chooser, "Back!",
          "Cancel"}},
        {"Edit Profile",
         {chooser,
          "Type your profile into the box below. Your profile from AIM has already been entered into the box "
          "for you. You may use limited HTML.",
          "Temporary profile (will be reverted back to last non-temporary profile on next sign on if "
          "checked)",
          "Save", "Cancel"}},
        {"Screenname Replacer",
         {"The Screenname Replacer allows you to give a screenname on your buddy list an alias. For example, "
          "you could change the screenname \"asdf1234\" to something more eye-appealing: \"Fred\".",
          "This new screenname will take place of the existing screenname whereever it may appear in all of "
          "AIM, including, but not limited to, IM conversations, profiles, and of course, the buddylist.",
          chooser, "Screenname replacer effects all connected screennames for now.",
          "Type in the screenname and the replaced name, and click Add to add it.",
          "Screenname:", "Replace With", "Add", "Remove Selected",
          "Due to limitations of Wrenlow being a proxy, you must sign off and sign back on after saving "
          "changes for the changes to take place.",
          "Save", "Cancel"}},
        {"Reprot A Bug",
         {"Found a problem with Wrenlow that you think I should know about? Fill out this form and send it "
          "to "
          "me. Everything will be kept confidential. This is only to help me fix bugs, etc. All fields are "
          "optional.",
          "Problem description",
          "In the problem description, please include what happened or what needs to be fixed. Also say what "
          "you were doing when the problem occured (sending an IM, signing on, etc) and any other "
          "information "
          "that you feel may be helpful.",
          "System specs (OS, ram, etc)", "Contact email or screenname", "Additional information or comments",
          "Submit", "Cancel"}},
        {"Wrenlow", {"Wrenlow generated the folloing error", ": \r\nat: : 0", "OK"}},
    };
    for (const auto& [caption, expected] : windows) {
        auto& window = os::fake::ShownDialog(caption);
        Texts texts;
        for (const auto& row : window.Table().controls) {
            const bool hasCaption = row.kind != os::ControlKind::IconPicture && *row.name != 't' &&
                                    row.kind != os::ControlKind::DropDownList &&
                                    row.kind != os::ControlKind::ListView;
            if (hasCaption) texts.push_back(window.Text(row.name));
        }
        EXPECT_EQ(texts, expected) << caption;
    }
}
