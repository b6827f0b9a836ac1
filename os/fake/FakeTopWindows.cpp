#include "os/fake/FakeTopWindows.h"

#include <map>

#include "os/fake/FakeLoop.h"

namespace os {
namespace {

struct State {
    std::map<WindowHandle, fake::TopWindow> windows;
    WindowHandle last = 0x10000;
    int enumerations = 0;
    bool canMakeTranslucent = true;
};

State& TheState() {
    static State state;
    return state;
}
const fake::WorldPart part([] { TheState() = State(); });

fake::TopWindow* Find(WindowHandle window) {
    const auto found = TheState().windows.find(window);
    return found == TheState().windows.end() ? nullptr : &found->second;
}

}  // namespace

std::vector<WindowHandle> TopLevelWindows() {
    ++TheState().enumerations;
    std::vector<WindowHandle> windows;
    for (const auto& [window, record] : TheState().windows) windows.insert(windows.begin(), window);
    return windows;
}

bool WindowExists(WindowHandle window) {
    return Find(window) != nullptr;
}

std::string WindowTitle(WindowHandle window) {
    const auto* record = Find(window);
    return record == nullptr ? std::string() : record->title;
}

bool CanMakeTranslucent() {
    return TheState().canMakeTranslucent;
}

void MakeTranslucent(WindowHandle window, std::uint8_t alpha) {
    auto* record = Find(window);
    if (record == nullptr) return;
    record->alpha = alpha;
    ++record->translucentCalls;
}

void MakeOpaque(WindowHandle window) {
    auto* record = Find(window);
    if (record == nullptr) return;
    record->alpha.reset();
    ++record->opaqueCalls;
}

bool WindowIsVisible(WindowHandle window) {
    const auto* record = Find(window);
    return record != nullptr && record->visible;
}

bool WindowIsMinimized(WindowHandle window) {
    const auto* record = Find(window);
    return record != nullptr && record->minimized;
}

void ShowHiddenWindow(WindowHandle window) {
    if (auto* record = Find(window)) record->visible = true;
}

void RestoreMinimizedWindow(WindowHandle window) {
    if (auto* record = Find(window)) record->minimized = false;
}

namespace fake {

WindowHandle OpenTopWindow(const std::string& title) {
    auto& state = TheState();
    state.windows[++state.last].title = title;
    return state.last;
}

TopWindow& TopWindowAt(WindowHandle window) {
    return TheState().windows.at(window);
}

void CloseTopWindow(WindowHandle window) {
    TheState().windows.erase(window);
}

int Enumerations() {
    return TheState().enumerations;
}

void SetCanMakeTranslucent(bool can) {
    TheState().canMakeTranslucent = can;
}

}  // namespace fake
}  // namespace os
