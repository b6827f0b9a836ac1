#include "desktop/modTrans.h"

#include <algorithm>

#include "app/services/modRegistry.h"
#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeTopWindows.h"
#include "tests/unit/FreshWorld.h"

namespace {

using os::fake::OpenTopWindow;

struct Trans : FreshWorld {
    Trans() { Set("0000", "50"); }
    ~Trans() override { Set("0000", "50"); }

    // One digit for each kind, and the amount; put in force as Apply does.
    static void Set(const char* kinds, const std::string& amount) {
        for (int kind = 0; kind < modTrans::kKinds; ++kind) {
            modRegistry::WriteSetting("trans" + std::to_string(kind + 1), std::string(1, kinds[kind]));
        }
        modRegistry::WriteSetting("transamount", amount);
        modTrans::LoadTransSettings();
    }

    static constexpr int kNotLayered = -1;
    static int AlphaAt(os::WindowHandle window) {
        const auto alpha = os::fake::topWindows.open.at(window).alpha;
        return alpha ? *alpha : kNotLayered;
    }
};

TEST_F(Trans, TitlesAreTestedExactlyAtTheirEnd) {
    constexpr int kNone = -1;
    const std::pair<const char*, int> cases[] = {
        {"Bob - Instant Message", 0},
        {" - Instant Message", 0},
        {"- Instant Message", kNone},
        {"Bob - instant message", kNone},
        {"Bob - Instant Message ", kNone},
        {"Buddy Info: Bob", 1},
        {"Buddy Info: ", 1},
        {"Buddy Info:", kNone},
        {"My Buddy Info: Bob", kNone},
        {"Bob's Buddy List Window", 2},
        {"Buddy List Window", kNone},
        {"Chat Room: x", 3},
        {"Chat Room:", kNone},
        {"", kNone},
    };
    for (const auto& [title, expected] : cases) {
        for (int kind = 0; kind < modTrans::kKinds; ++kind)
            EXPECT_EQ(modTrans::TitleIsOfKind(title, kind), kind == expected) << title << " " << kind;
    }
}

TEST_F(Trans, AmountsAreBroughtIntoRangeAndAlphaRoundsHalvesToEven) {
    const std::pair<const char*, int> amounts[] = {
        {"0", 0},   {"100", 100}, {"101", 100}, {"99999999999", 100}, {"-1", 0}, {"-99999999999", 0},
        {"+7", 7},  {"", 0},      {" ", 0},     {"abc", 0},           {"5x", 0}, {"--5", 0},
        {"+-5", 0}, {"-", 0},     {"007", 7},
    };
    for (const auto& [text, amount] : amounts) EXPECT_EQ(modTrans::ParseAmount(text), amount) << text;
    for (const auto& [amount, alpha] : {std::pair{0, 255}, {100, 0}, {50, 128}, {90, 26}, {70, 76}})
        EXPECT_EQ(modTrans::AlphaOf(amount), alpha) << amount;  // 127.5, 25.5 and 76.5 the last three
}

TEST_F(Trans, EachTickTreatsNewWindowsOfTheKindsThatAreOnAndNoWindowTwice) {
    const auto im = OpenTopWindow("Bob - Instant Message");
    const auto list = OpenTopWindow("Bob's Buddy List Window");
    Set("1000", "50");
    EXPECT_EQ(AlphaAt(im), kNotLayered) << "before the tick";
    modTrans::TimerTick();
    const auto later = OpenTopWindow("Al - Instant Message");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(im), 128);
    EXPECT_EQ(AlphaAt(later), 128);
    EXPECT_EQ(AlphaAt(list), kNotLayered);
    EXPECT_EQ(os::fake::topWindows.open.at(im).translucentCalls, 1);
    Set("1000", "100");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(im), 0);
}

TEST_F(Trans, SwitchingAKindOffMakesItsWindowsOpaqueAtOnceAndOnTranslucentAgain) {
    const auto im = OpenTopWindow("Bob - Instant Message");
    const auto chat = OpenTopWindow("Chat Room: x");
    for (int time = 0; time < 2; ++time) {
        Set("1001", "0");
        modTrans::TimerTick();
        EXPECT_EQ(AlphaAt(im), 255);
        Set("0001", "0");
        EXPECT_EQ(AlphaAt(im), kNotLayered);
    }
    EXPECT_EQ(os::fake::topWindows.open.at(chat).opaqueCalls, 0);
    EXPECT_EQ(AlphaAt(chat), 255);
}

TEST_F(Trans, TheTickDoesNothingWhileAllKindsAreOffAndAMissingSettingCountsAsOn) {
    const int before = os::fake::topWindows.enumerations;
    modTrans::TimerTick();
    EXPECT_EQ(os::fake::topWindows.enumerations, before);

    os::fake::registry = {};
    modTrans::LoadTransSettings();
    const auto info = OpenTopWindow("Buddy Info: Bob");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(info), 255);  // the amount is missing too
}

TEST_F(Trans, After999WindowsOnlyThePlaceOfClosedOnesIsTakenByOthers) {
    Set("1000", "50");
    std::vector<os::WindowHandle> windows;
    for (int i = 0; i < 1000; ++i) windows.push_back(OpenTopWindow("Bob - Instant Message"));
    const auto untreated = [&] {
        return std::ranges::count_if(windows, [](auto window) { return AlphaAt(window) == kNotLayered; });
    };
    modTrans::TimerTick();
    EXPECT_EQ(untreated(), 1);
    const auto closed = std::ranges::find(windows, 128, AlphaAt);
    os::fake::topWindows.open.erase(*closed);
    windows.erase(closed);
    modTrans::TimerTick();
    EXPECT_EQ(untreated(), 0);
}

}  // namespace
