// FakeHotkeys: the hotkeys and atoms that the program under test holds, and failures on demand.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "os/Hotkeys.h"

namespace os::fake {

struct HeldHotkey {
    WindowHandle window;
    std::int32_t id;
    std::uint32_t modifiers;
    std::uint32_t key;
};

// In the order of registration.
const std::vector<HeldHotkey>& HeldHotkeys();

// Atoms that have not been deleted: number and text.
const std::map<std::uint16_t, std::string>& GlobalAtoms();

// Another program holds the combination: registering it fails with 1409 and this text.
void TakeCombination(std::uint32_t modifiers, std::uint32_t key, const std::string& systemText);

// From now on no atom can be added: error 8 with this text.
void FailAtoms(const std::string& systemText);

}  // namespace os::fake
