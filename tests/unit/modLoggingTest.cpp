#include "features/modLogging.h"

#include "app/services/modRegistry.h"
#include "base/RuntimeError.h"
#include "os/Files.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Messages.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kHtml[] = "<HTML><BODY BGCOLOR=\"#ffffff\"><FONT SIZE=2>hi<BR>there</FONT></BODY></HTML>";

class modLoggingTest : public testing::Test {
 protected:
    modLoggingTest() {
        os::fake::SetLocalTime({2004, 5, 6, 13, 5, 9});
        Set({{"logims", "1"}, {"logwhere", "C:\\AimLogs\\"}, {"logfolder", "0"}, {"loghowhtm", "False"}});
        os::MakeFolder("C:");
    }

    static void Set(const std::vector<std::pair<std::string, std::string>>& settings) {
        for (const auto& [name, data] : settings) modRegistry::WriteSetting(name, data);
    }

    Rig rig_;
};

}  // namespace

TEST_F(modLoggingTest, TextLinesAreStrippedAndAppended) {
    modLogging::WriteLogLine("Fred", "Fred", kHtml, true);
    modLogging::WriteLogLine("fR ed", "My Name", "<b>bye</b>", false);
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\Fred 2004-05-06.txt"), "Fred (13:05:09): hi\r\nthere\r\n");
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\fRed 2004-05-06.txt"), "My Name (13:05:09): bye\r\n");
    modLogging::WriteLogLine("Fred", "My Name", "again", false);
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\Fred 2004-05-06.txt"),
              "Fred (13:05:09): hi\r\nthere\r\nMy Name (13:05:09): again\r\n");
}

TEST_F(modLoggingTest, HtmlLinesKeepTheMessageAndColourTheSpeaker) {
    Set({{"loghowhtm", "True"}});
    modLogging::WriteLogLine("Fred Smith", "Fred Smith", kHtml, true);
    modLogging::WriteLogLine("Fred Smith", "My Name", "hi", false);
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\FredSmith 2004-05-06.htm"),
              "<b><font color=#0000ff>FredSmith </font><font color=#0000ff size=-1>(13:05:09):</font> </b>" +
                  std::string(kHtml) +
                  "<br>\r\n"
                  "<b><font color=#ff0000>My Name </font><font color=#0000ff size=-1>(13:05:09):</font> </b>"
                  "hi<br>\r\n");
}

TEST_F(modLoggingTest, AnotherDayAndABuddysFolderAreOtherFiles) {
    modLogging::WriteLogLine("Fred", "Fred", "today", true);
    os::fake::SetLocalTime({2004, 12, 31, 0, 0, 0});
    modLogging::WriteLogLine("Fred", "Fred", "later", true);
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\Fred 2004-05-06.txt"), "Fred (13:05:09): today\r\n");
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\Fred 2004-12-31.txt"), "Fred (00:00:00): later\r\n");

    Set({{"logfolder", "1"}, {"logwhere", "C:\\AimLogs\\\\"}});
    modLogging::WriteLogLine("Fred", "Fred", "sorted", true);
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\Fred\\Fred 2004-12-31.txt"), "Fred (00:00:00): sorted\r\n");
}

TEST_F(modLoggingTest, NothingIsLoggedUnlessTheSettingIsExactlyOn) {
    for (const char* value : {"0", "", "true", "11", "True"}) {
        Set({{"logims", value}});
        modLogging::WriteLogLine("Fred", "Fred", "hi", true);
    }
    modRegistry::DeleteValue(os::RegistryHive::CurrentUser, modRegistry::kSettingsKey, "logims");
    modLogging::WriteLogLine("Fred", "Fred", "hi", true);
    Set({{"logims", "1"}});
    modLogging::WriteLogLine("  ", "  ", "hi", true);
    EXPECT_EQ(os::fake::WriteCount(), 1u);  // the test's own folder
}

TEST_F(modLoggingTest, ANameFromTheWireCannotLeaveTheLogFolder) {
    Set({{"logfolder", "1"}});
    modLogging::WriteLogLine("..\\..\\x", "..\\..\\x", "hi", true);
    modLogging::WriteLogLine("..", "..", "hi", true);
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\.._.._x\\.._.._x 2004-05-06.txt"),
              "..\\..\\x (13:05:09): hi\r\n");
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\__\\__ 2004-05-06.txt"), ".. (13:05:09): hi\r\n");
}

TEST_F(modLoggingTest, AFailureLeavesNoHalfLineAndTheNextLineIsFine) {
    modLogging::WriteLogLine("Fred", "Fred", "first", true);
    os::fake::FailWrites("C:\\AimLogs", 112);  // the disk is full
    EXPECT_THROW(modLogging::WriteLogLine("Fred", "Fred", "lost", true), RuntimeError);
    EXPECT_THROW(modLogging::WriteLogLine("Bob", "Bob", "lost", true), RuntimeError);
    os::fake::FailWrites("C:\\AimLogs", 0);
    modLogging::WriteLogLine("Fred", "Fred", "second", true);
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\Fred 2004-05-06.txt"),
              "Fred (13:05:09): first\r\nFred (13:05:09): second\r\n");

    Set({{"logwhere", "C:\\missing\\folder"}});  // only its last level is made
    EXPECT_THROW(modLogging::WriteLogLine("Fred", "Fred", "lost", true), RuntimeError);
}

TEST_F(modLoggingTest, MessagesAreLoggedUnderTheOtherPartysName) {
    clsHeaderSNAC snac;
    snac.Create(4, 7, 0, 0, IncomingData("Fred Smith", Tlv(2, MessageData("hi"))));
    modLogging::LogMessage(Direction::ToClient, snac, "My Name");
    snac.Create(4, 6, 0, 0, OutgoingData("Fred Smith", Tlv(2, MessageData("hello"))));
    modLogging::LogMessage(Direction::ToServer, snac, "My Name");
    snac.Create(4, 6, 0, 0, OutgoingData("Fred Smith", Tlv(2, MessageData(""))));
    modLogging::LogMessage(Direction::ToServer, snac, "My Name");
    EXPECT_EQ(os::fake::FileText("C:\\AimLogs\\FredSmith 2004-05-06.txt"),
              "FredSmith (13:05:09): hi\r\nMy Name (13:05:09): hello\r\n");
}

TEST_F(modLoggingTest, AMessageThatCannotBeReadFailsOnlyWhileLogging) {
    clsHeaderSNAC snac;
    snac.Create(4, 7, 0, 0, "cut off");
    EXPECT_THROW(modLogging::LogMessage(Direction::ToClient, snac, "My Name"), RuntimeError);
    Set({{"logims", "0"}});
    EXPECT_NO_THROW(modLogging::LogMessage(Direction::ToClient, snac, "My Name"));
}

TEST(StripHtml, DropsTheTagsOfFormattingAndNothingElse) {
    const struct {
        std::string html, text;
    } cases[] = {
        {"", ""},
        {"plain & simple", "plain & simple"},
        {kHtml, "hi\r\nthere"},
        {"<b>a</B><U>b</u><I>c</i>", "abc"},
        {"a<BR><br>b", "a\r\n\r\nb"},
        {"<A HREF=\"x\">link</A> <P> &lt;b&gt; <br/>", "<A HREF=\"x\">link</A> <P> &lt;b&gt; <br/>"},
        {"a<FONT COLOR=\"#ff0000\">b", "ab"},
        {"<body<font>>x", ">x"},
        {"<fontastic>x", "x"},
        {"x<FONT y", "x<FONT y"},  // never ends: no tag
        {"a>b<BODY c", "a>b<BODY c"},
        {"1 < 2 <", "1 < 2 <"},
        {"<ht<b>ml>", "<html>"},  // one pass: what is left is not looked at again
    };
    for (const auto& [html, text] : cases) EXPECT_EQ(modLogging::StripHtml(html), text) << html;
}
