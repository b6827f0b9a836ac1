#include "desktop/cRegHotKey.h"

#include "base/RuntimeError.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeHotkeys.h"
#include "os/fake/FakeTopWindows.h"
#include "os/fake/FakeTray.h"
#include "tests/unit/FreshWorld.h"

namespace {

constexpr os::WindowHandle kWindow = 0x1234;
constexpr std::uint32_t kCtrlAlt = os::HotkeyModifier::Ctrl | os::HotkeyModifier::Alt;

struct RegHotKey : FreshWorld {
    RegHotKey() {
        hotKeys.Attach(kWindow);
        hotKeys.HotKeyPress.Bind<&RegHotKey::hotKeys_HotKeyPress>(*this);
    }

    void hotKeys_HotKeyPress(const std::string& name, std::uint32_t modifiers, std::uint32_t key,
                             const std::string& text) {
        if (dropKeys) hotKeys.Clear();
        pressed += name + "/" + std::to_string(modifiers) + "/" + std::to_string(key) + "/" + text + ";";
    }

    // What comes of it, as "number text (source)"; the number in hexadecimal.
    std::string Register(const std::string& name, std::uint32_t key) {
        return ErrorOf([&] { hotKeys.RegisterKey(name, key, kCtrlAlt, "text"); });
    }
    template <typename Call>
    static std::string ErrorOf(Call call) {
        try {
            call();
        } catch (const RuntimeError& error) {
            char number[16];
            std::snprintf(number, sizeof number, "%08X ", static_cast<unsigned>(error.Number()));
            return number + std::string(error.what()) + " (" + error.Source() + ")";
        }
        return "";
    }

    static void Press(std::int32_t id, std::intptr_t lParam = 0) {
        os::fake::SendWindowMessage(kWindow, 786, static_cast<std::uintptr_t>(static_cast<std::intptr_t>(id)),
                                    lParam);
    }

    std::string pressed;
    bool dropKeys = false;
    cRegHotKey hotKeys;
};

TEST_F(RegHotKey, FailuresNameTheirReasonAndLeaveNoAtom) {
    const std::string longest(32, 'n');
    os::fake::hotkeys.takenByOthers[{kCtrlAlt, 'K'}] = "Hot key is already registered.\r\n";
    os::fake::hotkeys.takenByOthers[{kCtrlAlt, 'L'}] = "";
    EXPECT_EQ(
        Register("a", 'K'),
        "8004041B Failed to Register Hot Key [Hot key is already registered.\r\n] (wrenlow.cRegHotKey)");
    EXPECT_EQ(Register("a", 'L'), "8004041B Failed to Register Hot Key (wrenlow.cRegHotKey)");
    EXPECT_EQ(Register(longest + "n", 'M'),
              "8004041B Key Name too long (max 32 characters). (wrenlow.cRegHotKey)");
    EXPECT_TRUE(os::fake::hotkeys.atoms.empty());

    EXPECT_EQ(Register(longest, 'M'), "");
    EXPECT_EQ(Register(longest, 'O'),
              "8004041C The Key Name '" + longest + "' is already registered. (wrenlow.cRegHotKey)");
    EXPECT_EQ(Register(std::string(32, 'N'), 'N'), "") << "another name: case matters";
    EXPECT_EQ(os::fake::hotkeys.held.size(), 2u);
    EXPECT_EQ(os::fake::hotkeys.atoms.size(), 2u);

    os::fake::hotkeys.atomFailure = "Not enough storage.";
    EXPECT_EQ(Register("a", 'P'),
              "8004041A Failed to add GlobalAtom [Not enough storage.] (wrenlow.cRegHotKey)");
    EXPECT_EQ(ErrorOf([&] { hotKeys.UnregisterKey("a"); }),
              "8004041C No hot key registered under the name 'a' (wrenlow.cRegHotKey)");
}

TEST_F(RegHotKey, IdentifiersAreAtomsWidenedWithTheirSign) {
    Register("Set Away", 'K');
    const auto& held = os::fake::hotkeys.held.front();
    EXPECT_EQ(held.window, kWindow);
    EXPECT_EQ(held.id, -16316);  // 0xC044
    const auto& atom = os::fake::hotkeys.atoms.at(0xC044);
    EXPECT_TRUE(atom.starts_with("Set Away_wrenlow_4")) << atom;
}

TEST_F(RegHotKey, PressesReachAListenerThatMayDropTheKeyAndForeignOnesAreToldApart) {
    Press(-2);
    Press(-1);
    Press(77, 0x004B0006);
    os::fake::SendWindowMessage(kWindow, 787, 0, 0);  // no hotkey's message
    EXPECT_EQ(std::exchange(pressed, ""),
              "Desktop Snapshot/0/44/;Window Snapshot/4/44/;Unknown HotKey/6/75/;");
    Register("Panic!", 'P');
    dropKeys = true;
    Press(os::fake::hotkeys.held.front().id);
    EXPECT_EQ(pressed, "Panic!/3/80/text;");
}

TEST_F(RegHotKey, EveryEndGivesTheKeysBack) {
    const struct {
        const char* name;
        std::function<void()> end;
    } cases[] = {
        {"each by itself", [&] { hotKeys.UnregisterKey("a"), hotKeys.UnregisterKey("b"); }},
        {"the window is destroyed", [] { os::fake::SendWindowMessage(kWindow, 2, 0, 0); }},
        {"attached to another window", [&] { hotKeys.Attach(kWindow + 1); }},
        {"cleared, but attached", [&] { hotKeys.Clear(true); }},
    };
    for (const auto& [name, end] : cases) {
        hotKeys.Attach(kWindow);
        Register("a", 'A');
        Register("b", 'B');
        EXPECT_EQ(os::fake::hotkeys.held.size(), 2u) << name;
        end();
        EXPECT_TRUE(os::fake::hotkeys.held.empty() && os::fake::hotkeys.atoms.empty()) << name;
    }
    Register("a", 'A');
    EXPECT_EQ(os::fake::hotkeys.held.front().window, kWindow) << "still attached";
    {
        cRegHotKey other;
        other.Attach(kWindow);
        other.RegisterKey("b", 'B', kCtrlAlt, "");
    }
    EXPECT_EQ(os::fake::hotkeys.held.size(), 1u) << "destroyed";
}

TEST_F(RegHotKey, RestoreAndActivateShowsRestoresAndActivates) {
    const auto window = os::fake::OpenTopWindow("ours");
    os::fake::topWindows.open.at(window).visible = false;
    os::fake::topWindows.open.at(window).minimized = true;
    cRegHotKey::RestoreAndActivate(window);
    EXPECT_TRUE(os::fake::topWindows.open.at(window).visible);
    EXPECT_FALSE(os::fake::topWindows.open.at(window).minimized);
    EXPECT_EQ(os::fake::tray.foreground, window);
}

}  // namespace
