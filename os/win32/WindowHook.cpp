#include "os/desktop/WindowHook.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "base/Trap.h"

namespace os {
namespace {

struct HookedWindow {
    HWND window;
    WNDPROC ownProcedure;
    std::vector<WindowHook*> hooks;
};

std::vector<HookedWindow>& HookedWindows() {
    static std::vector<HookedWindow> windows;
    return windows;
}

HookedWindow* Find(HWND window) {
    auto& windows = HookedWindows();
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [=](const HookedWindow& hooked) { return hooked.window == window; });
    return found == windows.end() ? nullptr : &*found;
}

void Release(HWND window) {
    std::erase_if(HookedWindows(), [=](const HookedWindow& hooked) { return hooked.window == window; });
}

LRESULT CALLBACK HookProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* const hooked = Find(window);
    if (hooked == nullptr) return DefWindowProcA(window, message, wParam, lParam);
    const auto ownProcedure = hooked->ownProcedure;
    const auto hooks = hooked->hooks;
    for (auto hook = hooks.rbegin(); hook != hooks.rend(); ++hook) {
        // An earlier handler may have ended this hook, or the window.
        const auto* const now = Find(window);
        if (now == nullptr || std::find(now->hooks.begin(), now->hooks.end(), *hook) == now->hooks.end())
            continue;
        Trap("WindowHook:Message", [&] { (*hook)->Message(message, wParam, lParam); });
    }
    if (message == WM_NCDESTROY) Release(window);
    return CallWindowProcA(ownProcedure, window, message, wParam, lParam);
}

}  // namespace

struct WindowHook::Impl {
    HWND window;
};

WindowHook::WindowHook(WindowHandle window) : impl_(new Impl{reinterpret_cast<HWND>(window)}) {
    auto* hooked = Find(impl_->window);
    if (hooked == nullptr) {
        HookedWindows().push_back({impl_->window, nullptr, {}});
        hooked = &HookedWindows().back();
        hooked->ownProcedure = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrA(impl_->window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HookProcedure)));
    }
    hooked->hooks.push_back(this);
}

WindowHook::~WindowHook() {
    auto* const hooked = Find(impl_->window);
    if (hooked == nullptr) return;
    std::erase(hooked->hooks, this);
    if (!hooked->hooks.empty()) return;
    SetWindowLongPtrA(impl_->window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(hooked->ownProcedure));
    Release(impl_->window);
}

}  // namespace os
