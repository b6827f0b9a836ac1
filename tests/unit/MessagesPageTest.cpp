// The page "Messages": what was logged, read and searched by keyboard.
#include "desktop/frmWrenlow.h"

#include "app/services/modRegistry.h"
#include "net/EventLoop.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/FreshWorld.h"

namespace {

using os::fake::DialogUser;

struct MessagesPageTest : FreshWorld {
    MessagesPageTest() {
        modRegistry::WriteSetting("logwhere", "C:\\AimLogs\\");
        os::fake::PutFile("C:/AimLogs/Fred 2004-05-06.txt",
                          "Fred (13:05:09): hello\r\nMe (13:06:00): the\r\nweather\r\n");
        os::fake::PutFile("C:/AimLogs/Fred/Fred 2004-05-07.txt", "Fred (00:00:01): later\r\n");
        os::fake::PutFile(
            "C:/AimLogs/Ada 2004-05-06.htm",
            "<b><font color=#0000ff>Ada </font><font color=#0000ff size=-1>(09:00:00):</font> </b>"
            "<B>hel</B>p &#1084;<br>\r\n");
        form.Start("Messages");
        Wait();
    }
    // Until the library has nothing left to do, and the page has drawn it.
    static void Wait() {
        net::RunEventLoopUntil([] { return false; }, 3 * WrenlowPage::kRefreshMs);
    }

    Texts Rows(const char* list, int columns) { return FreshWorld::Rows(form.Window(), list, columns); }

    frmWrenlow form;
    DialogUser user{form.Window()};
};

}  // namespace

TEST_F(MessagesPageTest, ShowsNamesDaysAndConversations) {
    EXPECT_EQ(Rows("logNames", 2), (Texts{"Ada|1", "Fred|2"}));
    user.Choose("logNames", 1);
    EXPECT_EQ(Rows("logDays", 1), (Texts{"2004-05-07", "2004-05-06"}));
    EXPECT_EQ(form.Window().Text("logText"), "00:00:01 Fred: later\r\n");
    user.Choose("logDays", 1);
    EXPECT_EQ(form.Window().Text("logText"),
              "13:05:09 Fred: hello\r\n        13:06:00 Me: the\r\n            weather\r\n");
    user.Press("logOpen");
    user.Press("logFolder");
    user.Press("logPrint");
    EXPECT_EQ(os::fake::shell.opened, (Texts{"C:/AimLogs/Fred 2004-05-06.txt", "C:/AimLogs",
                                             "print C:/AimLogs/Fred 2004-05-06.txt"}));
    user.Press("logCopy");
    EXPECT_EQ(os::fake::shell.clipboard, form.Window().Text("logText"));

    os::fake::PutFile("C:/AimLogs/Bob 2004-05-08.txt", "Bob (01:00:00): new\r\n");
    user.Choose("SSTab1", 0);
    form.Start("Messages");
    Wait();
    EXPECT_EQ(Rows("logNames", 2), (Texts{"Ada|1", "Bob|1", "Fred|2"}));
    EXPECT_EQ(form.Window().Value("logNames"), 2) << "what was chosen stays chosen";
}

TEST_F(MessagesPageTest, FindsAsOneTypesAndEnterGoesThere) {
    user.Type("logSearch", "hel");
    Wait();
    EXPECT_FALSE(user.Sees("logNames"));
    EXPECT_EQ(Rows("logHits", 3), (Texts{"Fred|2004-05-06|[hello]", "Ada|2004-05-06|*[hel]*p \xD0\xBC"}));
    EXPECT_EQ(form.Window().Text("logStatus"), "2 messages");
    user.Choose("logHits", 0);
    EXPECT_EQ(user.Marked("logText"), "hello");
    user.Type("logSearch", "weath");
    Wait();
    user.PressEnter("logSearch");
    EXPECT_TRUE(user.Sees("logNames"));
    EXPECT_EQ(form.Window().Text("logSearch"), "");
    EXPECT_EQ(user.Marked("logText"), "weather");
    EXPECT_EQ(form.Window().Value("logDays"), 1);
    EXPECT_TRUE(user.HasFocus("logText"));
}

TEST_F(MessagesPageTest, ExportsAWholeHistory) {
    user.Choose("logNames", 1);
    for (const auto& [file, begin] : {std::pair("C:/Fred.txt",
                                                "\xEF\xBB\xBF"
                                                "Fred 2004-05-06\r\n13:05:09 Fred: hello\r\n"),
                                      std::pair("C:/Fred.html", "<!DOCTYPE html>")}) {
        os::fake::fileDialogs.answer = file;
        user.Press("logExport");
        const auto text = os::fake::FileText(file).value_or("");
        EXPECT_TRUE(text.starts_with(begin)) << text;
        EXPECT_NE(text.find("later"), std::string::npos);
    }
}
