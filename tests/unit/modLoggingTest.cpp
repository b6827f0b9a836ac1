#include "features/modLogging.h"

#include "app/services/modRegistry.h"
#include "base/RuntimeError.h"
#include "os/Files.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Messages.h"

namespace {

const std::string kHtml = "<HTML><BODY BGCOLOR=\"#ffffff\"><FONT SIZE=2>hi<BR>there</FONT></BODY></HTML>";

struct modLoggingTest : FreshWorld {
    modLoggingTest() {
        os::fake::SetLocalTime({2004, 5, 6, 13, 5, 9});
        Set("logims", "1");
        Set("logwhere", "C:\\AimLogs\\");
        Set("logfolder", "0");
        Set("loghowhtm", "False");
        os::MakeFolder("C:");
    }

    static void Set(const char* name, const char* value) { modRegistry::WriteSetting(name, value); }

    // A line of an incoming message.
    static void Hear(const std::string& buddy, const std::string& text) {
        modLogging::WriteLogLine(buddy, buddy, text, true);
    }
    static std::string Log(const std::string& name) {
        return os::fake::FileText("C:\\AimLogs\\" + name).value_or("no file");
    }
};

}  // namespace

TEST_F(modLoggingTest, AnotherDayAndABuddysFolderAreOtherFiles) {
    Hear("Fred", "today");
    os::fake::SetLocalTime({2004, 12, 31, 0, 0, 0});
    Hear("Fred", "later");
    EXPECT_EQ(Log("Fred 2004-05-06.txt"), "Fred (13:05:09): today\r\n");
    EXPECT_EQ(Log("Fred 2004-12-31.txt"), "Fred (00:00:00): later\r\n");
    Set("logfolder", "1");
    Set("logwhere", "C:\\AimLogs\\\\");
    Hear("Fred", "sorted");
    EXPECT_EQ(Log("Fred\\Fred 2004-12-31.txt"), "Fred (00:00:00): sorted\r\n");
}

TEST_F(modLoggingTest, NothingIsLoggedUnlessTheSettingIsExactlyOn) {
    const auto cutOff = [] {
        clsHeaderSNAC snac;
        snac.Create(4, 7, 0, 0, "cut off");
        modLogging::LogMessage(Direction::ToClient, snac, "My Name");
    };
    for (const char* value : {"0", "", "true", "11", "True"}) {
        Set("logims", value);
        Hear("Fred", "hi");
        EXPECT_NO_THROW(cutOff()) << "who does not log is not told";
    }
    modRegistry::DeleteValue(os::RegistryHive::CurrentUser, modRegistry::kSettingsKey, "logims");
    Hear("Fred", "hi");
    Set("logims", "1");
    Hear("  ", "hi");
    EXPECT_EQ(os::fake::WriteCount(), 1u);  // the test's own folder
    EXPECT_THROW(cutOff(), RuntimeError);
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
