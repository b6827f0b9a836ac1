// The command line and the error lines of wrenlow-relay; the program as a whole is in tests/e2e.
#include "app/relay/ConsoleReports.h"
#include "app/relay/RelayOptions.h"
#include "base/RuntimeError.h"
#include "os/fake/FakeClock.h"
#include "tests/unit/FreshWorld.h"

namespace {

using Arguments = std::vector<std::string>;

TEST(RelayOptions, TakesEveryOptionInAnyOrder) {
    const auto options = ParseRelayOptions({"--set", "logims=1", "--listen-port", "0", "--data", "/var/x",
                                            "--set", "logwhere=a=b", "--settings", "-odd", "--set", "x="});
    EXPECT_EQ(options.action, RelayOptions::Action::Run);
    EXPECT_EQ(options.listenPort, 0);
    EXPECT_EQ(options.dataFolder, "/var/x");
    EXPECT_EQ(options.settingsFile, "-odd");
    const std::vector<std::pair<std::string, std::string>> overrides = {
        {"logims", "1"}, {"logwhere", "a=b"}, {"x", ""}};
    EXPECT_EQ(options.overrides, overrides);
}

TEST(RelayOptions, KnowsWhatToDoInsteadOfRunning) {
    using enum RelayOptions::Action;
    const struct {
        Arguments arguments;
        RelayOptions::Action action;
        std::string name, value;
    } cases[] = {
        {{}, Run, "", ""},
        {{"--version"}, Version, "", ""},
        {{"--help", "--version"}, Help, "", ""},
        {{"--settings", "f", "set", "name", "--value"}, SetValue, "name", "--value"},
        {{"get", "name"}, GetValue, "name", ""},
        {{"logs"}, PrintLogs, "", ""},
        {{"logs", "My", "Name"}, PrintLogs, "My Name", ""},
        {{"--data", "d", "logs", "--search", "two words", "more"}, PrintLogs, "", "two words more"},
    };
    for (const auto& [arguments, action, name, value] : cases) {
        const auto options = ParseRelayOptions(arguments);
        EXPECT_EQ(options.action, action) << static_cast<int>(action);
        EXPECT_EQ(options.name, name);
        EXPECT_EQ(options.value, value);
    }
}

TEST(RelayOptions, TellsWhatIsWrong) {
    const std::string portNeeded = "--listen-port needs a number from 0 to 65535";
    const struct {
        Arguments arguments;
        std::string text;
    } cases[] = {
        {{"--bogus"}, "unknown option --bogus"},
        {{"11080"}, "unexpected argument 11080"},
        {{"--data"}, "--data needs a value"},
        {{"--data", ""}, "--data needs a value"},
        {{"--listen-port", "65536"}, portNeeded},
        {{"--listen-port", "-1"}, portNeeded},
        {{"--listen-port", "80x"}, portNeeded},
        {{"--listen-port", ""}, portNeeded},
        {{"--set", "logims"}, "--set needs NAME=VALUE"},
        {{"--set", "=1"}, "--set needs NAME=VALUE"},
        {{"set", "name"}, "set needs a value"},
        {{"get", "name", "more"}, "unexpected argument more"},
        {{"get", ""}, "get needs a value"},
        {{"logs", "--search"}, "--search needs a value"},
    };
    for (const auto& [arguments, text] : cases) {
        try {
            ParseRelayOptions(arguments);
            ADD_FAILURE() << text;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.what(), text);
            EXPECT_EQ(error.Number(), ErrorNumber::InvalidArgument);
        }
    }
}

struct Reports : FreshWorld {
    ConsoleReports reports;
};

TEST_F(Reports, ADescriptionFromAStrangerCannotSteerTheTerminal) {
    EXPECT_EQ(reports.LinesFor("bad\x1B[2J\r\nname\x7F", -5, "clsWinConn:X", 3),
              "error -5: bad?[2J??name? at: clsWinConn:X: 3\n");
    EXPECT_EQ(Printable("\xC2\x9B"
                        "2J \xC2\xA0\xC3\xA9"),
              "?2J \xC2\xA0\xC3\xA9");
    EXPECT_EQ(Printable("\x90\xE9\x80"), "?\xC3\xA9\xE2\x82\xAC");  // no UTF-8
}

TEST_F(Reports, TwentyLinesASecondAreWrittenAndWhatIsLeftOutIsTold) {
    const auto written = [&](int times) {
        int lines = 0;
        for (int i = 0; i < times; ++i) lines += reports.LinesFor("x", 1, "a:b", 0).empty() ? 0 : 1;
        return lines;
    };
    EXPECT_EQ(written(30), 20);
    os::fake::AdvanceClock(999);
    EXPECT_EQ(written(1), 0);
    os::fake::AdvanceClock(1);
    EXPECT_EQ(reports.LinesFor("x", 1, "a:b", 0), "11 more errors were not shown\nerror 1: x at: a:b: 0\n");
    EXPECT_EQ(written(30), 19);
}

}  // namespace
