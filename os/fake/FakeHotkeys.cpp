#include "os/fake/FakeHotkeys.h"

#include "base/RuntimeError.h"

namespace os {
namespace {

constexpr std::int32_t kNotEnoughMemory = 8;             // ERROR_NOT_ENOUGH_MEMORY
constexpr std::int32_t kHotkeyAlreadyRegistered = 1409;  // ERROR_HOTKEY_ALREADY_REGISTERED

}  // namespace

std::uint16_t AddGlobalAtom(const std::string& text) {
    auto& state = fake::hotkeys;
    if (state.atomFailure) throw RuntimeError(kNotEnoughMemory, *state.atomFailure);
    state.atoms[state.nextAtom] = text;
    return state.nextAtom++;
}

void DeleteGlobalAtom(std::uint16_t atom) {
    fake::hotkeys.atoms.erase(atom);
}

void RegisterHotkey(WindowHandle window, std::int32_t id, std::uint32_t modifiers, std::uint32_t key) {
    auto& state = fake::hotkeys;
    if (const auto taken = state.takenByOthers.find({modifiers, key}); taken != state.takenByOthers.end()) {
        throw RuntimeError(kHotkeyAlreadyRegistered, taken->second);
    }
    for (const auto& hotkey : state.held) {
        if (hotkey.modifiers == modifiers && hotkey.key == key) {
            throw RuntimeError(kHotkeyAlreadyRegistered, "Hot key is already registered.");
        }
    }
    state.held.push_back({window, id, modifiers, key});
}

void UnregisterHotkey(WindowHandle window, std::int32_t id) {
    std::erase_if(fake::hotkeys.held,
                  [&](const auto& hotkey) { return hotkey.window == window && hotkey.id == id; });
}

std::uint32_t SystemTicks() {
    return fake::hotkeys.ticks++;
}

}  // namespace os
