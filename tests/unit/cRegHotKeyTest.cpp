#include "desktop/cRegHotKey.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "os/fake/FakeHotkeys.h"
#include "os/fake/FakePopupMenu.h"
#include "os/fake/FakeTopWindows.h"
#include "os/fake/FakeWindowHook.h"
#include "os/fake/FakeWorld.h"

namespace {

constexpr os::WindowHandle kWindow = 0x1234;
constexpr std::uint32_t kCtrlAlt = os::HotkeyModifier::Ctrl | os::HotkeyModifier::Alt;

class RegHotKey : public testing::Test {
 protected:
    void SetUp() override {
        os::fake::ResetWorld();
        os::fake::ResetHotkeys();
        os::fake::ResetTopWindows();
        hotKeys.Attach(kWindow);
        hotKeys.HotKeyPress.Bind(listener);
    }

    // The error that the call raises, as "number text (source)"; the number in hexadecimal.
    template <typename Call>
    static std::string ErrorOf(Call call) {
        try {
            call();
        } catch (const RuntimeError& error) {
            char number[16];
            std::snprintf(number, sizeof number, "%08X ", static_cast<unsigned>(error.Number()));
            return number + std::string(error.what()) + " (" + error.Source() + ")";
        }
        return "none";
    }

    void Press(std::int32_t id, std::intptr_t lParam = 0) {
        os::fake::SendWindowMessage(kWindow, 786, static_cast<std::uintptr_t>(static_cast<std::intptr_t>(id)),
                                    lParam);
    }

    std::string pressed;
    struct Listener {
        std::string& pressed;
        void operator()(const std::string& name, std::uint32_t modifiers, std::uint32_t key,
                        const std::string& text) {
            pressed += name + "/" + std::to_string(modifiers) + "/" + std::to_string(key) + "/" + text + ";";
        }
    } listener{pressed};
    cRegHotKey hotKeys;
};

TEST_F(RegHotKey, RefusesLongAndDoubleNamesBeforeTouchingTheSystem) {
    const std::string longest(32, 'n');
    hotKeys.RegisterKey(longest, 'K', kCtrlAlt, "");
    EXPECT_EQ(ErrorOf([&] { hotKeys.RegisterKey(longest + "n", 'L', kCtrlAlt, ""); }),
              "8004041B Key Name too long (max 32 characters). (wrenlow.cRegHotKey)");
    EXPECT_EQ(ErrorOf([&] { hotKeys.RegisterKey(longest, 'M', 1, ""); }),
              "8004041C The Key Name '" + longest + "' is already registered. (wrenlow.cRegHotKey)");
    hotKeys.RegisterKey(std::string(32, 'N'), 'N', kCtrlAlt, "");  // another name: case matters
    EXPECT_EQ(os::fake::HeldHotkeys().size(), 2u);
    EXPECT_EQ(os::fake::GlobalAtoms().size(), 2u);
}

TEST_F(RegHotKey, FailuresOfTheSystemNameItsReasonAndLeaveNoAtom) {
    os::fake::TakeCombination(kCtrlAlt, 'K', "Hot key is already registered.\r\n");
    os::fake::TakeCombination(kCtrlAlt, 'L', "");
    EXPECT_EQ(
        ErrorOf([&] { hotKeys.RegisterKey("a", 'K', kCtrlAlt, ""); }),
        "8004041B Failed to Register Hot Key [Hot key is already registered.\r\n] (wrenlow.cRegHotKey)");
    EXPECT_EQ(ErrorOf([&] { hotKeys.RegisterKey("a", 'L', kCtrlAlt, ""); }),
              "8004041B Failed to Register Hot Key (wrenlow.cRegHotKey)");
    EXPECT_TRUE(os::fake::GlobalAtoms().empty());

    os::fake::FailAtoms("Not enough storage.");
    EXPECT_EQ(ErrorOf([&] { hotKeys.RegisterKey("a", 'M', kCtrlAlt, ""); }),
              "8004041A Failed to add GlobalAtom [Not enough storage.] (wrenlow.cRegHotKey)");
    EXPECT_EQ(ErrorOf([&] { hotKeys.UnregisterKey("a"); }),
              "8004041C No hot key registered under the name 'a' (wrenlow.cRegHotKey)");
}

TEST_F(RegHotKey, IdentifiersAreAtomsWidenedWithTheirSign) {
    hotKeys.RegisterKey("Set Away", 'K', kCtrlAlt, "lunch");
    const auto& held = os::fake::HeldHotkeys().front();
    EXPECT_EQ(held.window, kWindow);
    EXPECT_EQ(held.id, -16316);  // 0xC044
    const auto& atom = os::fake::GlobalAtoms().at(0xC044);
    EXPECT_TRUE(atom.starts_with("Set Away_wrenlow_4")) << atom;
    Press(held.id);
    EXPECT_EQ(pressed, "Set Away/3/75/lunch;");
}

TEST_F(RegHotKey, PressesOfNobodysKeysAreReportedByWhatTheyAre) {
    Press(-2);
    Press(-1);
    Press(77, 0x004B0006);
    os::fake::SendWindowMessage(kWindow, 787, 0, 0);
    EXPECT_EQ(pressed, "Desktop Snapshot/0/44/;Window Snapshot/4/44/;Unknown HotKey/6/75/;");
}

TEST_F(RegHotKey, EveryEndGivesTheKeysBack) {
    const auto fill = [&] {
        hotKeys.RegisterKey("a", 'A', kCtrlAlt, "");
        hotKeys.RegisterKey("b", 'B', kCtrlAlt, "");
    };
    const auto isEmpty = [] { return os::fake::HeldHotkeys().empty() && os::fake::GlobalAtoms().empty(); };
    fill();
    hotKeys.UnregisterKey("a");
    EXPECT_EQ(os::fake::HeldHotkeys().size(), 1u);
    hotKeys.RegisterKey("a", 'A', kCtrlAlt, "");
    os::fake::SendWindowMessage(kWindow, 2, 0, 0);  // the window is destroyed
    EXPECT_TRUE(isEmpty());
    hotKeys.Attach(kWindow);
    fill();
    hotKeys.Clear(true);  // stays attached
    EXPECT_TRUE(isEmpty());
    fill();
    EXPECT_EQ(os::fake::HeldHotkeys().front().window, kWindow);
    hotKeys.Attach(kWindow + 1);
    EXPECT_TRUE(isEmpty());
    {
        cRegHotKey other;
        other.Attach(kWindow);
        other.RegisterKey("a", 'A', kCtrlAlt, "");
    }
    EXPECT_TRUE(isEmpty());
}

TEST_F(RegHotKey, AListenerMayDropTheKeyThatItHearsOf) {
    hotKeys.RegisterKey("Panic!", 'P', kCtrlAlt, "text");
    const auto id = os::fake::HeldHotkeys().front().id;
    std::string heard;
    auto dropper = [&](const std::string& name, std::uint32_t, std::uint32_t, const std::string& text) {
        hotKeys.Clear();
        heard = name + "/" + text;
    };
    hotKeys.HotKeyPress.Bind(dropper);
    Press(id);
    EXPECT_EQ(heard, "Panic!/text");
}

TEST_F(RegHotKey, RestoreAndActivateDoesOnlyWhatIsNeeded) {
    const auto window = os::fake::OpenTopWindow("ours");
    os::fake::TopWindowAt(window).visible = false;
    os::fake::TopWindowAt(window).minimized = true;
    cRegHotKey::RestoreAndActivate(window);
    EXPECT_TRUE(os::fake::TopWindowAt(window).visible);
    EXPECT_FALSE(os::fake::TopWindowAt(window).minimized);
    EXPECT_EQ(os::fake::ForegroundWindow(), window);
}

}  // namespace
