// Reading the logs: lines, words and the index.
#include "app/relay/LogPrinter.h"
#include "features/logs/LogIndex.h"
#include "features/logs/LogLibrary.h"
#include "features/logs/LogReader.h"
#include "net/EventLoop.h"
#include "os/Files.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/FreshWorld.h"

namespace {

std::string Conversation(std::string_view content, bool isHtml) {
    LogReader reader(content, isHtml, "Fred");
    std::string all;
    for (LogLine line; reader.Next(line);)
        all += (line.own ? "> " : "") + line.speaker + "|" + line.time + "|" + line.text + "\n";
    return all;
}

std::string Marked(std::string_view question, std::string_view line) {
    std::string text(line);
    const auto marks = Question(question).Find(line);
    for (auto mark = marks.rbegin(); mark != marks.rend(); ++mark) {
        text.insert(mark->end, "]");
        text.insert(mark->begin, "[");
    }
    return text;
}

TEST(LogReader, ReadsBothFormsAsTheyWereSaid) {
    EXPECT_EQ(
        Conversation("Fred (13:05:09): hi\r\nthere\r\nMy Name (13:05:10): you (01:02:03) &lt;3\r\n", false),
        "Fred|13:05:09|hi\nthere\n> My Name|13:05:10|you (01:02:03) <3\n");
    EXPECT_EQ(
        Conversation(
            "<b><font color=#0000ff>Fred </font><font color=#0000ff size=-1>(13:05:09):</font> </b>"
            "<HTML><BODY BGCOLOR=\"#ffffff\"><B>hi</B><BR>&#128512;</BODY></HTML><br>\r\n"
            "<b><font color=#ff0000>My Name </font><font color=#0000ff size=-1>(13:05:10):</font> </b>1 < 2"
            "<br>\r\n",
            true),
        "Fred|13:05:09|*hi*\n\xF0\x9F\x98\x80\n> My Name|13:05:10|1 < 2\n");
    EXPECT_EQ(Conversation("no log at all\r\n<b><font color=#ff", true),
              "||no log at all\n*<font color=#ff\n");
    EXPECT_EQ(Conversation("", false), "");
}

TEST(Question, MarksWordsOfAnyScriptByTheirBeginnings) {
    EXPECT_EQ(Marked("hel", "Hello, shell HELP"), "[Hello], shell [HELP]");
    EXPECT_EQ(Marked("two one", "one and two"), "[one] and [two]");
    EXPECT_EQ(Marked("two three", "one and two"), "one and two");
    EXPECT_EQ(Marked("\xC3\x89t\xC3\xA9", "l'\xC3\xA9t\xC3\xA9"), "l'[\xC3\xA9t\xC3\xA9]");
    EXPECT_EQ(Marked("\xD0\x9F\xD0\xA0\xD0\x98", "\xD0\xBF\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82!"),
              "[\xD0\xBF\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82]!");
    EXPECT_EQ(Marked("\xF0\x9F\x98\x80", "so\xF0\x9F\x98\x80\xF0\x9F\x98\x81"),
              "so[\xF0\x9F\x98\x80]\xF0\x9F\x98\x81");
    EXPECT_EQ(Marked(" ,. ", "anything"), "anything");
    EXPECT_EQ(Marked(std::string(60, 'a'), std::string(70, 'a')), "[" + std::string(70, 'a') + "]");
}

std::string BytesOf(const LogIndex& index) {
    std::string bytes;
    LogIndex::Writer writer(index);
    for (auto part = writer.Next(); !part.empty(); part = writer.Next()) bytes += part;
    return bytes;
}

std::optional<LogIndex> FromBytes(const std::string& bytes) {
    LogIndex::Loader loader(bytes, 0);
    while (loader.Next()) {
    }
    return loader.Take();
}

TEST(LogIndex, FindsFilesByTheBeginningsOfTheirWords) {
    const auto add = [](LogIndex& to, const LogIndex::File& file, std::initializer_list<const char*> words) {
        to.Add(file);
        for (const auto* word : words) to.AddWord(word);
    };
    LogIndex index;
    add(index, {"Fred 2004-05-06.txt", 1, 10}, {"hello", "world", "hello"});
    add(index, {"Ada 2004-05-06.txt", 2, 20}, {"help", "world"});
    add(index, {"Bob 2004-05-06.txt", 3, 30}, {"world"});
    const auto find = [&](const LogIndex& in, std::string_view question) {
        std::string names;
        for (const auto number : in.Find(Question(question)))
            names += in.Files()[number].path.substr(0, 3) + ' ';
        return names;
    };
    EXPECT_EQ(find(index, "hel"), "Fre Ada ");
    EXPECT_EQ(find(index, "wor hello"), "Fre ");
    EXPECT_EQ(find(index, "orld"), "");
    EXPECT_EQ(find(index, ""), "");

    index.Remove(0);
    add(index, {"Fred 2004-05-06.txt", 4, 40}, {"bye"});
    const auto bytes = BytesOf(index);
    auto again = FromBytes(bytes);
    ASSERT_TRUE(again);
    add(*again, {"New 2004-05-07.txt", 5, 50}, {"hello", "bye"});
    EXPECT_EQ(find(*again, "hel"), "Ada New ");
    EXPECT_EQ(find(*again, "bye"), "Fre New ");

    for (std::size_t i = 0; i < bytes.size(); ++i) {
        auto damaged = bytes;
        damaged[i] = static_cast<char>(damaged[i] ^ 1);
        EXPECT_FALSE(FromBytes(damaged)) << i;
        EXPECT_FALSE(FromBytes(bytes.substr(0, i))) << i;
    }
}

constexpr const char* kFresh = "/program/logs.idx.fresh";

struct LogLibraryTest : FreshWorld {
    LogLibraryTest() {
        Put("Fred 2004-05-06.txt", "Fred (13:05:09): hello\r\nthere\r\nMy Name (13:05:10): caf\xE9 \x80\r\n");
        Put("Fred/Fred 2004-05-07.txt",
            "\xEF\xBB\xBF"
            "Fred (00:00:01): \xF0\x9F\x98\x80 hello again\r\n");
        Put("Ada 2004-05-06.htm",
            "<b><font color=#0000ff>Ada </font><font color=#0000ff size=-1>(09:00:00):</font>"
            " </b><B>help</B> &#128512;<br>\r\n");
        Put("readme.txt", "hello");
        Put("Fred 2004-05-06.txt.new", "hello");
    }

    static void Put(const std::string& name, std::string_view text) {
        os::fake::PutFile("/logs/" + name, text);
    }
    // What "wrenlow-relay logs" prints, in a new run of the program.
    static std::string Printed(const std::string& name, const std::string& words = "") {
        std::string all;
        LogLibrary library(os::Path::FromText("/logs"), os::Path::FromText("/program/logs.idx"));
        LogPrinter printer(library, [&](const auto& lines) { all += lines; });
        const bool found = printer.Print(name, words);
        EXPECT_EQ(found, !all.empty());
        return all;
    }
};

TEST_F(LogLibraryTest, ListsReadsAndSearchesBothFormsInBothPlaces) {
    EXPECT_EQ(Printed(""), "Ada (1 day)\nFred (2 days)\n");
    EXPECT_EQ(Printed("f r E d"),
              "Fred 2004-05-06\n13:05:09 Fred: hello\n    there\n"
              "13:05:10 My Name: caf\xC3\xA9 \xE2\x82\xAC\n"
              "\nFred 2004-05-07\n00:00:01 Fred: \xF0\x9F\x98\x80 hello again\n");
    EXPECT_EQ(Printed("nobody"), "");
    EXPECT_EQ(Printed("", "HEL"),
              "Fred 2004-05-07 00:00:01 Fred: \xF0\x9F\x98\x80 hello again\n"
              "Fred 2004-05-06 13:05:09 Fred: hello\n    there\n"
              "Ada 2004-05-06 09:00:00 Ada: *help* \xF0\x9F\x98\x80\n");
    EXPECT_EQ(Printed("", "again \xF0\x9F\x98\x80").substr(0, 16), "Fred 2004-05-07 ");
    EXPECT_EQ(Printed("", "ello"), "");
}

TEST_F(LogLibraryTest, TheIndexIsNeverWrong) {
    EXPECT_NE(Printed("", "caf\xC3\xA9"), "");
    const auto writes = os::fake::files.writes;
    EXPECT_NE(Printed("", "caf\xC3\xA9"), "");
    EXPECT_EQ(os::fake::files.writes, writes) << "the index stands";

    os::AppendToFile(os::Path::FromText("/logs/Fred 2004-05-06.txt"), "Fred (23:00:00): later caf\xE9");
    os::RemoveFile(os::Path::FromText("/logs/Fred/Fred 2004-05-07.txt"));
    Put("New 2004-05-08.txt", "New (01:02:03): caf\xE9");
    EXPECT_EQ(Printed("", "caf\xC3\xA9"),
              "New 2004-05-08 01:02:03 New: caf\xC3\xA9\n"
              "Fred 2004-05-06 13:05:10 My Name: caf\xC3\xA9 \xE2\x82\xAC\n"
              "Fred 2004-05-06 23:00:00 Fred: later caf\xC3\xA9\n");
    EXPECT_EQ(Printed("", "again"), "");
    for (const auto* damaged : {"", "hostile"}) {
        os::fake::PutFile("/program/logs.idx", damaged);
        EXPECT_NE(Printed("", "caf\xC3\xA9"), "") << damaged;
    }
    os::fake::FailWrites("/program/logs.idx", 5);
    Put("New 2004-05-09.txt", "New (01:02:03): brandnew");
    for (int run = 0; run < 2; ++run) EXPECT_NE(Printed("", "brandnew"), "");
    EXPECT_FALSE(os::FileExists(os::Path::FromText(kFresh)));
}

TEST_F(LogLibraryTest, ALargeIndexIsSavedInPartsBesideOtherWork) {
    std::string text = "Bob (00:00:00):";
    for (int word = 0; word < 60'000; ++word) text += " word" + std::to_string(word);
    Put("Bob 2004-05-06.txt", text);
    {
        LogLibrary library(os::Path::FromText("/logs"), os::Path::FromText("/program/logs.idx"));
        library.Refresh();
        ASSERT_TRUE(net::RunEventLoopUntil([] { return os::fake::FileText(kFresh).has_value(); }, 60'000));
        EXPECT_FALSE(os::fake::FileText("/program/logs.idx"));
        Put("Bob 2004-05-07.txt", "Bob (00:00:01): afterwards");
        library.Refresh();
        ASSERT_TRUE(net::RunEventLoopUntil([&] { return !library.IsBusy(); }, 60'000));
        EXPECT_FALSE(os::fake::FileText(kFresh));
    }
    const auto writes = os::fake::files.writes;
    EXPECT_NE(Printed("", "word59999"), "");
    EXPECT_NE(Printed("", "afterwards"), "");
    EXPECT_EQ(os::fake::files.writes, writes) << "the index stands";
}

TEST_F(LogLibraryTest, ASearchGoesOnInSlicesAndTheNextOneTakesItsPlace) {
    for (int day = 10; day < 99; ++day) {
        std::string text;
        for (int line = 0; line < 50; ++line)
            text += "Bob (00:00:00): word" + std::to_string(day) + " all\r\n";
        Put("Bob 19" + std::to_string(day) + "-01-01.txt", text);
    }
    LogLibrary library(os::Path::FromText("/logs"), os::Path::FromText("/program/logs.idx"));
    const auto wait = [&] { net::RunEventLoopUntil([&] { return !library.IsBusy(); }, 60'000); };
    library.Refresh();
    library.Search("word50");
    wait();
    EXPECT_EQ(library.Hits().size(), 50u) << "asked before the files were known";
    EXPECT_EQ(library.Names().at("Bob").size(), 89u);
    library.Search("word50");
    library.Search("all");
    wait();
    EXPECT_EQ(library.Hits().size(), LogLibrary::kMaxHits);
    EXPECT_EQ(library.Hits().front().day.date, "1998-01-01");
    library.Search("");
    EXPECT_FALSE(library.IsBusy());
    EXPECT_TRUE(library.Hits().empty());
}

}  // namespace
