// The replacer, the bug form, and the oddities in the texts of all dialogs.
#include "features/modSNReplace.h"
#include "tests/unit/AllDialogs.h"

namespace {

constexpr char kReplacer[] = "Screenname Replacer";
constexpr char kFile[] = "/program\\repl.dat";

struct Replacer : FormRig {
    Replacer() {
        rig.SignOn("My Name");
        os::fake::PutFile(kFile, "asdf 1234\r\nFred\r\nQwerty 9\r\nWilma\r\n");
    }

    static User Open() {
        SharedForm<frmSNReplacer>().Start();
        return User(kReplacer);
    }
    static std::string Saved() { return os::fake::FileText(kFile).value_or("no file"); }
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

TEST_F(Replacer, EditsTheListOfTheFileByButtonsAndByEnter) {
    auto user = Open();
    EXPECT_EQ(user.Window().EntryCount("cmbScreenname"), 1) << "no (all) here";
    Add(user, "New Name", "Pebbles ");
    EXPECT_EQ(user.Window().Text("txtScreenname") + user.Window().Text("txtReplace"), "");
    EXPECT_TRUE(user.HasFocus("txtScreenname"));
    EXPECT_EQ(Rows(user), (Texts{"asdf 1234=Fred", "Qwerty 9=Wilma", "New Name=Pebbles "}));
    user.SelectRows("lvNames", {0, 2});
    user.Press("cmdRemove");
    user.Type("txtScreenname", "zx");
    user.PressEnter("txtScreenname");
    EXPECT_TRUE(user.HasFocus("txtReplace"));
    user.Type("txtReplace", "Dino");
    user.PressEnter("txtReplace");  // adds, and does not save
    EXPECT_TRUE(IsShown(kReplacer));
    user.Press("cmdSave");
    EXPECT_EQ(Saved(), "Qwerty 9\r\nWilma\r\nzx\r\nDino\r\n");
    EXPECT_FALSE(IsShown(kReplacer));
}

TEST_F(Replacer, RefusesANameThatIsInTheListOnEitherSideAndAnEmptyHalf) {
    auto user = Open();
    const Texts refusal{"The screenname \"asdf 1234\" is already being replaced by \"Fred\"."};
    for (const char* name : {"AsDf1234", "asdf1234", "FRED", "f r e d"}) {
        Add(user, name, "Barney");
        for (const auto& box : os::fake::ShownBoxes()) EXPECT_EQ(box.icon, os::BoxIcon::Error);
        EXPECT_EQ(TakeBoxes(), refusal) << name;
        EXPECT_EQ(user.Window().Text("txtReplace"), "Barney") << "what was typed is lost";
    }
    Add(user, "  ", "Barney");
    EXPECT_TRUE(user.HasFocus("txtScreenname"));
    Add(user, "zx", "");
    EXPECT_TRUE(user.HasFocus("txtReplace"));
    EXPECT_EQ(Rows(user).size(), 2u);
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
    const auto before = Saved();
    auto user = Open();
    Add(user, "zx", "Dino");
    os::fake::FailWrites(kFile, 112);
    user.Press("cmdSave");
    EXPECT_EQ(TakeBoxes().size(), 1u);
    EXPECT_TRUE(IsShown(kReplacer));
    EXPECT_EQ(Saved(), before);
    os::fake::FailWrites(kFile, 0);
    user.Press("cmdSave");
    EXPECT_EQ(Saved(), before + "zx\r\nDino\r\n");
}

TEST_F(Replacer, AFileThatCannotBeReadIsNotOpenedForOverwriting) {
    os::fake::FailReads(kFile, true);
    Rig::Reports().clear();
    SharedForm<frmSNReplacer>().Start();
    EXPECT_FALSE(IsShown(kReplacer));
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].where, "frmSNReplacer:Start");
}

TEST_F(OtherDialogs, TheBugFormSubmitsNothingAndForgetsWhatWasTyped) {
    for (const char* button : {"cmdSubmit", "cmdCancel"}) {
        SharedForm<frmBug>().Start();
        User bug("Reprot A Bug");
        for (const char* box : {"txtDesc", "txtSpecs", "txtContact", "txtComments"}) bug.Type(box, "secret");
        bug.Press(button);
        EXPECT_FALSE(IsShown("Reprot A Bug"));
        for (const char* box : {"txtDesc", "txtSpecs", "txtContact", "txtComments"})
            EXPECT_EQ(bug.Window().Text(box), "");
    }
    EXPECT_EQ(os::fake::WriteCount() + os::fake::OutgoingCount(), 0u);
    EXPECT_EQ(TakeBoxes(), Texts());
}

TEST_F(AllDialogs, TheOdditiesOfTheTextsStandAsPeopleKnowThem) {
    const std::pair<const char*, const char*> oddities[] = {
        {"Remove Away Message", "and you  will not be able to send any IMs."},
        {"Set Idle Time", "No. of idle minutes: (max 65535)"},
        {"Unidle", "have the idle time removed, and click Unidle"},
        {"Unidle", "Back!"},
        {kReplacer, "whereever it may appear"},
        {kReplacer, "Screenname replacer effects all connected screennames for now."},
        {"Reprot A Bug", "when the problem occured"},
        {"Settings", "(Win 2000/XP/2003 only)"},
        {"Wrenlow", "Wrenlow generated the folloing error"},
    };
    for (const auto& [caption, text] : oddities) {
        const auto& rows = os::fake::ShownDialog(caption).Table().controls;
        EXPECT_TRUE(std::ranges::any_of(rows,
                                        [&](const auto& row) {
                                            return std::string_view(row.caption).find(text) !=
                                                   std::string_view::npos;
                                        }))
            << caption << ": " << text;
    }
}
