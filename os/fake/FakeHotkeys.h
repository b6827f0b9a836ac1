// FakeHotkeys: the hotkeys and atoms that the program under test holds, and failures on demand.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "os/desktop/Hotkeys.h"
#include "os/fake/FakeWorld.h"

namespace os::fake {

struct Hotkeys {
    struct Held {
        WindowHandle window;
        std::int32_t id;
        std::uint32_t modifiers;
        std::uint32_t key;
    };
    std::vector<Held> held;  // in the order of registration
    // Combinations of modifiers and key that other programs hold: registering one fails with 1409 and the
    // text.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::string> takenByOthers;
    std::map<std::uint16_t, std::string> atoms;  // that have not been deleted
    std::uint16_t nextAtom = 0xC044;             // system atoms begin at 0xC000
    std::optional<std::string> atomFailure;      // no atom can be added: error 8 with this text
    std::uint32_t ticks = 4'000'000'000u;
};
inline Hotkeys& hotkeys = Fresh<Hotkeys>();

}  // namespace os::fake
