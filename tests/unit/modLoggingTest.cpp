#include "features/modLogging.h"

#include "app/services/modRegistry.h"
#include "base/RuntimeError.h"
#include "os/Files.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Messages.h"
#include "tests/unit/Reported.h"

namespace {

const std::string kHtml = "<HTML><BODY BGCOLOR=\"#ffffff\"><FONT SIZE=2>hi<BR>there</FONT></BODY></HTML>";

struct modLoggingTest : FreshWorld {
    modLoggingTest() {
        os::fake::timeOfDay.local = {2004, 5, 6, 13, 5, 9};
        Set("logims", "1");
        Set("logwhere", "C:\\AimLogs\\");
        Set("logfolder", "0");
        Set("loghowhtm", "False");
        os::MakeFolder(os::Path::FromText("C:"));
    }

    static void Set(const char* name, const char* value) { modRegistry::WriteSetting(name, value); }

    // A message comes from the buddy.
    void Hear(const std::string& buddy, const std::string& text) {
        clsHeaderSNAC snac;
        snac.Create(4, 7, 0, 0, IncomingData(buddy, Tlv(2, MessageData(text))));
        log.LogMessage(Direction::ToClient, snac, "My Name");
    }
    static std::string Log(const std::string& name) {
        return os::fake::FileText("C:\\AimLogs\\" + name).value_or("no file");
    }

    modLogging::MessageLog log;
    Reported reported;
};

}  // namespace

TEST_F(modLoggingTest, AnotherDayAndABuddysFolderAreOtherFiles) {
    Hear("Fred", "today");
    os::fake::timeOfDay.local = {2004, 12, 31, 0, 0, 0};
    Hear("Fred", "later");
    EXPECT_EQ(Log("Fred 2004-05-06.txt"), "Fred (13:05:09): today\r\n");
    EXPECT_EQ(Log("Fred 2004-12-31.txt"), "Fred (00:00:00): later\r\n");
    Set("logfolder", "1");
    Set("logwhere", "C:\\AimLogs\\\\");
    Hear("Fred", "sorted");
    Hear("FRED", "the same");  // where case matters to the disk, too
    EXPECT_EQ(Log("Fred\\Fred 2004-12-31.txt"), "Fred (00:00:00): sorted\r\nFRED (00:00:00): the same\r\n");
    Hear("../a\\b", "no path");
    EXPECT_EQ(Log(".._a_b\\.._a_b 2004-12-31.txt"), "../a\\b (00:00:00): no path\r\n");
}

TEST_F(modLoggingTest, PlainTextBecomesUtf8WithTheFirstCharacterThatTheCodePageLacks) {
    Hear("Fred", "caf\xE9");
    Hear("Fred", "&#233; &#x41; &#1046");
    const std::string before = "Fred (13:05:09): caf\xE9\r\nFred (13:05:09): &#233; &#x41; &#1046\r\n";
    EXPECT_EQ(Log("Fred 2004-05-06.txt"), before);
    Hear("Fred", "&#128512;&#1046;!");
    Hear("Fred", "caf\xE9");
    EXPECT_EQ(Log("Fred 2004-05-06.txt"),
              "\xEF\xBB\xBF"
              "Fred (13:05:09): caf\xC3\xA9\r\nFred (13:05:09): &#233; &#x41; &#1046\r\n"
              "Fred (13:05:09): \xF0\x9F\x98\x80\xD0\x96!\r\nFred (13:05:09): caf\xC3\xA9\r\n");
    Hear("Ada", "caf\xE9");
    os::fake::FailReads("C:\\AimLogs\\Ada 2004-05-06.txt", true);
    Hear("Ada", "&#128512;");
    EXPECT_EQ(Log("Ada 2004-05-06.txt"), "Ada (13:05:09): caf\xE9\r\nAda (13:05:09): &#128512;\r\n")
        << "what cannot be read is not replaced";
    Set("loghowhtm", "True");
    Hear("Fred", "&#128512;");
    EXPECT_NE(Log("Fred 2004-05-06.htm").find("&#128512;"), std::string::npos);
}

TEST_F(modLoggingTest, SettingsAreOnAtExactlyTheirTextAndAnEmptyMessageIsNone) {
    const auto cutOff = [this] {
        clsHeaderSNAC snac;
        snac.Create(4, 7, 0, 0, "cut off");
        log.LogMessage(Direction::ToClient, snac, "My Name");
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
    Hear("Fred", "");
    EXPECT_EQ(os::fake::files.writes, 1u);  // the test's own folder
    EXPECT_THROW(cutOff(), RuntimeError);
    for (const char* value : {"0", "", "True", "11"}) {
        Set("logfolder", value);
        Hear("Fred", "hi");
        EXPECT_FALSE(os::FolderExists(os::Path::FromText("C:\\AimLogs\\Fred"))) << value;
    }
    for (const char* value : {"False", "", "1", "true"}) {
        Set("loghowhtm", value);
        Hear("Fred", "hi");
        EXPECT_EQ(Log("Fred 2004-05-06.htm"), "no file") << value;
    }
}

TEST_F(modLoggingTest, AFolderThatFailsIsToldOnceAndSoIsItsReturnWithWhatIsMissing) {
    os::fake::FailWrites("C:\\AimLogs", 70);
    for (int i = 0; i < 5; ++i) Hear("Fred", "lost");
    const std::string told = "70: Not logged in C:/AimLogs: The change was made to fail";
    EXPECT_EQ(Reported::Lines(), Texts{told});
    os::fake::FailWrites("C:\\AimLogs", 0);
    Hear("Fred", "soon");
    os::fake::AdvanceClock(60'000);
    EXPECT_EQ(Reported::Lines(), Texts{told}) << "not more often than once in a minute";
    Hear("Fred", "there");
    Hear("Fred", "again");
    EXPECT_EQ(Reported::Lines(),
              (Texts{told, "75: Logging goes on in C:/AimLogs; messages that are missing: 5"}));
}

TEST_F(modLoggingTest, AFolderThatStandsStillIsLeftAloneForAWhileAndForTwiceAsLongNextTime) {
    Hear("Fred", "quick");
    os::fake::SlowWrites("C:\\AimLogs", 1001);
    std::vector<std::int64_t> pauses;
    Hear("Fred", "slow");
    const auto lines = [] { return Log("Fred 2004-05-06.txt").size(); };
    for (auto written = os::MonotonicMilliseconds(); pauses.size() < 6;) {
        os::fake::AdvanceClock(1000);
        const auto before = lines();
        const auto now = os::MonotonicMilliseconds();
        Hear("Fred", "x");
        if (lines() == before) continue;
        pauses.push_back((now - written) / 1000);
        written = os::MonotonicMilliseconds();
    }
    EXPECT_EQ(pauses, (std::vector<std::int64_t>{60, 120, 240, 480, 600, 600}));
    EXPECT_EQ(Reported::Lines(), Texts{"75: Slow, so logging pauses: C:/AimLogs"});
    os::fake::SlowWrites("C:\\AimLogs", 1000);
    os::fake::AdvanceClock(600'000);
    Hear("Fred", "quick again");
    EXPECT_EQ(Reported::Lines().back(), "75: Logging goes on in C:/AimLogs; messages that are missing: 2094");
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
