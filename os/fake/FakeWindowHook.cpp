#include "os/fake/FakeWindowHook.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/Trap.h"

namespace os {
namespace {

std::vector<std::pair<WindowHandle, WindowHook*>>& Hooks() {
    static std::vector<std::pair<WindowHandle, WindowHook*>> hooks;
    return hooks;
}

}  // namespace

struct WindowHook::Impl {};

WindowHook::WindowHook(WindowHandle window) {
    Hooks().emplace_back(window, this);
}

WindowHook::~WindowHook() {
    std::erase_if(Hooks(), [this](const auto& entry) { return entry.second == this; });
}

namespace fake {

void SendWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam) {
    const auto hooks = Hooks();
    for (auto entry = hooks.rbegin(); entry != hooks.rend(); ++entry) {
        const bool stillThere = std::find(Hooks().begin(), Hooks().end(), *entry) != Hooks().end();
        if (entry->first != window || !stillThere) continue;
        Trap("WindowHook:Message", [&] { entry->second->Message(message, wParam, lParam); });
    }
}

}  // namespace fake
}  // namespace os
