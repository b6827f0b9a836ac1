#include "desktop/modTrans.h"

#include <gtest/gtest.h>

#include "app/services/modRegistry.h"
#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeTopWindows.h"

namespace {

using os::fake::OpenTopWindow;
using os::fake::TopWindowAt;

class Trans : public testing::Test {
 protected:
    void SetUp() override {
        os::fake::ResetRegistry();
        os::fake::ResetTopWindows();
        Set("0000", "50");
    }
    void TearDown() override {
        SetUp();
        modTrans::LoadTransSettings();
    }

    // One digit for each kind, and the amount; put in force as Apply does.
    static void Set(const char* kinds, const std::string& amount) {
        for (int kind = 0; kind < modTrans::kKinds; ++kind) {
            modRegistry::WriteSetting("trans" + std::to_string(kind + 1), std::string(1, kinds[kind]));
        }
        modRegistry::WriteSetting("transamount", amount);
        modTrans::LoadTransSettings();
    }

    // -1 for a window that is no layered one.
    static int AlphaAt(os::WindowHandle window) {
        const auto alpha = TopWindowAt(window).alpha;
        return alpha ? *alpha : -1;
    }
};

TEST_F(Trans, TitlesAreTestedExactlyAtTheirEnd) {
    struct Case {
        const char* title;
        int kind;  // -1: none
    };
    const Case cases[] = {
        {"Bob - Instant Message", 0},
        {" - Instant Message", 0},
        {"- Instant Message", -1},
        {"Bob - Instant Message ", -1},
        {"Bob - instant message", -1},
        {"Buddy Info: Bob", 1},
        {"Buddy Info: ", 1},
        {"Buddy Info:", -1},
        {"My Buddy Info: Bob", -1},
        {"Bob's Buddy List Window", 2},
        {"Buddy List Window", -1},
        {"Chat Room: x", 3},
        {"Chat Room:", -1},
        {"", -1},
    };
    for (const auto& one : cases) {
        for (int kind = 0; kind < modTrans::kKinds; ++kind) {
            EXPECT_EQ(modTrans::TitleIsOfKind(one.title, kind), kind == one.kind) << one.title << " " << kind;
        }
    }
}

TEST_F(Trans, AmountsAreBroughtIntoRangeAndAlphaRoundsHalvesToEven) {
    const std::pair<const char*, int> amounts[] = {
        {"0", 0},   {"100", 100}, {"101", 100}, {"99999999999", 100}, {"-1", 0}, {"-99999999999", 0},
        {"+7", 7},  {"", 0},      {" ", 0},     {"abc", 0},           {"5x", 0}, {"--5", 0},
        {"+-5", 0}, {"-", 0},     {"007", 7},
    };
    for (const auto& [text, amount] : amounts) EXPECT_EQ(modTrans::ParseAmount(text), amount) << text;
    EXPECT_EQ(modTrans::AlphaOf(0), 255);
    EXPECT_EQ(modTrans::AlphaOf(100), 0);
    EXPECT_EQ(modTrans::AlphaOf(50), 128);  // 127.5
    EXPECT_EQ(modTrans::AlphaOf(90), 26);   // 25.5
    EXPECT_EQ(modTrans::AlphaOf(70), 76);   // 76.5
}

TEST_F(Trans, EachTickTreatsNewWindowsOfTheKindsThatAreOnAndNoWindowTwice) {
    const auto im = OpenTopWindow("Bob - Instant Message");
    const auto list = OpenTopWindow("Bob's Buddy List Window");
    Set("1000", "50");
    EXPECT_EQ(AlphaAt(im), -1);  // until the tick
    modTrans::TimerTick();
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(im), 128);
    EXPECT_EQ(TopWindowAt(im).translucentCalls, 1);
    EXPECT_EQ(AlphaAt(list), -1);
    const auto later = OpenTopWindow("Al - Instant Message");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(later), 128);
    Set("1000", "100");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(im), 0);
}

TEST_F(Trans, SwitchingAKindOffMakesItsWindowsOpaqueAtOnce) {
    const auto im = OpenTopWindow("Bob - Instant Message");
    const auto chat = OpenTopWindow("Chat Room: x");
    Set("1001", "0");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(im), 255);
    Set("0001", "0");
    EXPECT_EQ(AlphaAt(im), -1);
    EXPECT_EQ(TopWindowAt(chat).opaqueCalls, 0);
    EXPECT_EQ(AlphaAt(chat), 255);
    Set("1001", "0");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(im), 255);
}

TEST_F(Trans, TheTickDoesNothingWhileAllKindsAreOffAndAMissingSettingCountsAsOn) {
    const int before = os::fake::Enumerations();
    modTrans::TimerTick();
    EXPECT_EQ(os::fake::Enumerations(), before);

    os::fake::ResetRegistry();
    modTrans::LoadTransSettings();
    const auto info = OpenTopWindow("Buddy Info: Bob");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(info), 255);  // the amount is missing too
}

TEST_F(Trans, After999WindowsOnlyThePlaceOfClosedOnesIsTakenByOthers) {
    Set("1000", "50");
    std::vector<os::WindowHandle> windows;
    for (int i = 0; i < 999; ++i) windows.push_back(OpenTopWindow("Bob - Instant Message"));
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(windows.front()), 128);
    const auto one = OpenTopWindow("Bob - Instant Message");
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(one), -1);
    os::fake::CloseTopWindow(windows[5]);
    modTrans::TimerTick();
    EXPECT_EQ(AlphaAt(one), 128);
}

}  // namespace
