// The replacer, the bug form, and the oddities in the texts of all dialogs.
#include "desktop/frmBug.h"
#include "features/dialogs/frmSNReplacer.h"
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
    static Texts Rows(const User& user) { return FormRig::Rows(user.Window(), "lvNames", 2); }
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
    EXPECT_EQ(Rows(user), (Texts{"asdf 1234|Fred", "Qwerty 9|Wilma", "New Name|Pebbles "}));
    user.Choose("lvNames", 0);
    user.Press("cmdRemove");
    user.Choose("lvNames", 1);
    user.PressDelete("lvNames");
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

TEST_F(Replacer, RefusesInWordsWhatWouldBetrayItsUser) {
    const std::string taken = "The screenname \"asdf 1234\" is already being replaced by \"Fred\".";
    const std::string both = " already: messages to it could not reach both.";
    const struct {
        std::string name, alias;
        const char* focus;
        std::string why;
    } cases[] = {
        {"AsDf1234", "Barney", "txtScreenname", taken},
        {"f r e d", "Barney", "txtScreenname", taken},
        {"new", "FRED", "txtReplace", "\"FRED\" stands for \"asdf 1234\"" + both},
        {"new", "qwerty9", "txtReplace", "\"qwerty9\" stands for \"Qwerty 9\"" + both},
        {"myname", "Me", "txtScreenname",
         "\"myname\" is signed on through Wrenlow: with an alias it could not sign on again."},
        {"new", "MYNAME", "txtReplace",
         "\"MYNAME\" is signed on through Wrenlow: messages to it would go to \"new\"."},
        {"  ", "Barney", "txtScreenname", "Type in the screenname that is to be replaced."},
        {"zx", " ", "txtReplace", "Type in the name that it is to be replaced with."},
        {std::string(256, 'x'), "Barney", "txtScreenname",
         "A screenname can be at most 255 characters long."},
        {"zx", std::string(256, 'x'), "txtReplace", "A screenname can be at most 255 characters long."},
    };
    auto user = Open();
    for (const auto& [name, alias, focus, why] : cases) {
        Add(user, name, alias);
        for (const auto& box : os::fake::boxes.shown) {
            EXPECT_EQ(box.icon, os::BoxIcon::Error);
            EXPECT_EQ(box.owner, user.Window().Handle());
        }
        EXPECT_EQ(TakeBoxes(), Texts{why});
        EXPECT_TRUE(user.HasFocus(focus)) << why;
        EXPECT_EQ(user.Window().Text("txtReplace"), alias) << "what was typed is lost";
    }
    EXPECT_EQ(Rows(user).size(), 2u);
    Add(user, "new", "N E W");  // only written in another way
    EXPECT_EQ(TakeBoxes(), Texts());
}

TEST_F(Replacer, LosesNothingThatStandsInTheFile) {
    const std::string damaged("zero\0byte\r\nal\0ias\r\n", 19);
    os::fake::PutFile(kFile, damaged);
    auto user = Open();
    EXPECT_EQ(Rows(user), Texts{"zero?byte|al?ias"});
    Add(user, "zx", "Dino");
    user.Press("cmdSave");
    EXPECT_EQ(Saved(), damaged + "zx\r\nDino\r\n");
}

TEST_F(Replacer, LosesNothingThatWasTyped) {
    const auto before = Saved();
    auto user = Open();
    user.Press("cmdCancel");
    EXPECT_EQ(TakeBoxes(), Texts()) << "nothing was changed";

    Open();
    Add(user, "zx", "Dino");
    using enum os::BoxResult;
    for (const auto& [answer, shown] : {std::pair{Cancel, true}, {No, false}}) {
        os::fake::boxes.answers = {answer};
        user.PressEscape();
        EXPECT_EQ(TakeBoxes(), Texts{"The list has been changed. Save the changes?"});
        EXPECT_EQ(IsShown(kReplacer), shown);
    }
    EXPECT_EQ(Saved(), before);

    Open();
    user.Type("txtScreenname", "zx");
    user.Press("cmdSave");
    EXPECT_EQ(TakeBoxes(), Texts{"Type in the name that it is to be replaced with."});
    user.Type("txtReplace", "Dino");
    user.Press("cmdSave");
    EXPECT_EQ(Saved(), before + "zx\r\nDino\r\n") << "the pair in the boxes belongs to the list";
}

TEST_F(Replacer, TakesNoMoreThanItsReadersRead) {
    std::string file;
    for (std::size_t i = 0; i < modSNReplace::kMaxPairs; ++i)
        file += "name" + std::to_string(i) + "\r\nx\r\n";
    os::fake::PutFile(kFile, file);
    auto user = Open();
    Add(user, "one more", "y");
    EXPECT_EQ(TakeBoxes().size(), 1u);
    EXPECT_EQ(Rows(user).size(), modSNReplace::kMaxPairs);
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
    EXPECT_EQ(os::fake::files.writes + os::fake::OutgoingCount(), 0u);
    EXPECT_EQ(TakeBoxes(), Texts());
}

// Texts that people know the program by. Who means to change one changes the sum of its dialog too; what they
// look like together, the pictures of the manual show.
TEST_F(AllDialogs, TheTextsStandToTheLetter) {
    const std::pair<const char*, std::uint32_t> sums[] = {
        {"Set Away Message", 3204330836u}, {"Remove Away Message", 2802899082u},
        {"Set Idle Time", 4103567507u},    {"Unidle", 59690910u},
        {"Edit Profile", 943695125u},      {kReplacer, 1991645404u},
        {"Reprot A Bug", 1476724160u},     {"Settings", 2038156531u},
        {"Wrenlow", 1913977615u},
    };
    for (const auto& [caption, expected] : sums) {
        std::string texts;
        for (const auto& row : os::fake::ShownDialog(caption).Table().controls)
            texts += std::string(row.caption) + "\n";
        std::uint32_t sum = 2166136261u;  // FNV-1a
        for (const char c : texts) sum = (sum ^ static_cast<std::uint8_t>(c)) * 16777619u;
        EXPECT_EQ(sum, expected) << caption << "\n" << texts;
    }
}
