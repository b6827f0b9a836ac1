#include "os/fake/FakeTopWindows.h"

#include <utility>

namespace os {
namespace {

fake::TopWindow* Find(WindowHandle window) {
    const auto found = fake::topWindows.open.find(window);
    return found == fake::topWindows.open.end() ? nullptr : &found->second;
}

}  // namespace

std::vector<WindowHandle> TopLevelWindows() {
    ++fake::topWindows.enumerations;
    if (const auto action = std::exchange(fake::topWindows.duringEnumeration, nullptr)) action();
    std::vector<WindowHandle> windows;
    for (const auto& [window, record] : fake::topWindows.open) windows.insert(windows.begin(), window);
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
    return fake::topWindows.canMakeTranslucent;
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

WindowHandle fake::OpenTopWindow(const std::string& title) {
    topWindows.open[++topWindows.last].title = title;
    return topWindows.last;
}

}  // namespace os
