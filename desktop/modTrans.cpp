#include "desktop/modTrans.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "app/services/Settings.h"
#include "base/Text.h"
#include "os/desktop/TopWindows.h"

namespace modTrans {
namespace {

struct Kind {
    settings::Name<true> setting;
    std::string_view prefix;  // one of the two is empty
    std::string_view suffix;
};

constexpr std::array<Kind, kKinds> kKindTable{{
    {"trans1", "", " - Instant Message"},
    {"trans2", "Buddy Info: ", ""},
    {"trans3", "", " Buddy List Window"},
    {"trans4", "Chat Room: ", ""},
}};

// Windows remembered at most between two loads of the settings.
constexpr std::size_t kMaxHandled = 999;

struct State {
    std::array<bool, kKinds> on{};
    int amount = 0;
    std::vector<os::WindowHandle> handled;
};

State& TheState() {
    static State state;
    return state;
}

// A kind whose setting is missing counts as on.
bool KindIsOn(const Kind& kind) {
    return settings::IsOn(kind.setting);
}

template <typename Wanted>
bool MatchesKind(const std::string& title, Wanted wanted) {
    for (int kind = 0; kind < kKinds; ++kind) {
        if (wanted(kind) && TitleIsOfKind(title, kind)) return true;
    }
    return false;
}

bool IsHandled(os::WindowHandle window) {
    const auto& handled = TheState().handled;
    return std::find(handled.begin(), handled.end(), window) != handled.end();
}

// Whether one more window can be remembered; windows that are gone make room.
bool HasRoom() {
    auto& handled = TheState().handled;
    if (handled.size() < kMaxHandled) return true;
    std::erase_if(handled, [](os::WindowHandle window) { return !os::WindowExists(window); });
    return handled.size() < kMaxHandled;
}

void ScanPass() {
    const auto& state = TheState();
    const auto isOn = [&](int kind) { return state.on[static_cast<std::size_t>(kind)]; };
    for (const auto window : os::TopLevelWindows()) {
        if (IsHandled(window) || !MatchesKind(os::WindowTitle(window), isOn)) continue;
        if (!HasRoom()) return;
        TheState().handled.push_back(window);
        os::MakeTranslucent(window, AlphaOf(state.amount));
    }
}

void RestorePass() {
    const auto& state = TheState();
    const auto isOff = [&](int kind) { return !state.on[static_cast<std::size_t>(kind)]; };
    for (const auto window : os::TopLevelWindows()) {
        if (MatchesKind(os::WindowTitle(window), isOff)) os::MakeOpaque(window);
    }
}

// Want of memory is all that can go wrong in a pass; the next one tries again.
template <typename Pass>
void Quietly(Pass pass) noexcept {
    try {
        pass();
    } catch (...) {
    }
}

}  // namespace

void LoadTransSettings() noexcept {
    Quietly([] {
        auto& state = TheState();
        for (std::size_t kind = 0; kind < kKindTable.size(); ++kind)
            state.on[kind] = KindIsOn(kKindTable[kind]);
        state.amount = ParseAmount(settings::Text("transamount"));
        state.handled.clear();
        RestorePass();
    });
}

void TimerTick() noexcept {
    Quietly([] {
        if (std::any_of(kKindTable.begin(), kKindTable.end(), KindIsOn)) ScanPass();
    });
}

int ParseAmount(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == text.npos;
    // What no number can hold is more than everything, too.
    return isNumber ? std::min(ParseNumber<int>(text).value_or(100), 100) : 0;
}

std::uint8_t AlphaOf(int amount) {
    return static_cast<std::uint8_t>(std::nearbyint((100 - amount) * 255.0 / 100.0));
}

bool TitleIsOfKind(std::string_view title, int kind) {
    const auto& wanted = kKindTable[static_cast<std::size_t>(kind)];
    return title.starts_with(wanted.prefix) && title.ends_with(wanted.suffix);
}

}  // namespace modTrans
