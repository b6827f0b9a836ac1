#include "os/fake/FakeHotkeys.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/RuntimeError.h"
#include "os/fake/FakeLoop.h"

namespace os {
namespace {

constexpr std::int32_t kNotEnoughMemory = 8;             // ERROR_NOT_ENOUGH_MEMORY
constexpr std::int32_t kHotkeyAlreadyRegistered = 1409;  // ERROR_HOTKEY_ALREADY_REGISTERED

struct State {
    std::vector<fake::HeldHotkey> held;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::string> takenByOthers;
    std::map<std::uint16_t, std::string> atoms;
    std::uint16_t nextAtom = 0xC044;  // system atoms begin at 0xC000
    std::optional<std::string> atomFailure;
    std::uint32_t ticks = 4'000'000'000u;
};

State& TheState() {
    static State state;
    return state;
}
const fake::WorldPart part([] { TheState() = State(); });

}  // namespace

std::uint16_t AddGlobalAtom(const std::string& text) {
    auto& state = TheState();
    if (state.atomFailure) throw RuntimeError(kNotEnoughMemory, *state.atomFailure);
    state.atoms[state.nextAtom] = text;
    return state.nextAtom++;
}

void DeleteGlobalAtom(std::uint16_t atom) {
    TheState().atoms.erase(atom);
}

void RegisterHotkey(WindowHandle window, std::int32_t id, std::uint32_t modifiers, std::uint32_t key) {
    auto& state = TheState();
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
    std::erase_if(TheState().held,
                  [&](const auto& hotkey) { return hotkey.window == window && hotkey.id == id; });
}

std::uint32_t SystemTicks() {
    return TheState().ticks++;
}

namespace fake {

const std::vector<HeldHotkey>& HeldHotkeys() {
    return TheState().held;
}

const std::map<std::uint16_t, std::string>& GlobalAtoms() {
    return TheState().atoms;
}

void TakeCombination(std::uint32_t modifiers, std::uint32_t key, const std::string& systemText) {
    TheState().takenByOthers[{modifiers, key}] = systemText;
}

void FailAtoms(const std::string& systemText) {
    TheState().atomFailure = systemText;
}

}  // namespace fake
}  // namespace os
