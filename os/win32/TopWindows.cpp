#include "os/TopWindows.h"

#include <windows.h>

#include <new>

namespace os {
namespace {

HWND Native(WindowHandle window) {
    return reinterpret_cast<HWND>(window);
}

struct Enumeration {
    std::vector<WindowHandle> windows;
    bool outOfMemory = false;
};

// No exception may cross the system's frames: the want of memory is carried out of the enumeration.
BOOL CALLBACK KeepWindow(HWND window, LPARAM parameter) {
    auto& enumeration = *reinterpret_cast<Enumeration*>(parameter);
    try {
        enumeration.windows.push_back(reinterpret_cast<WindowHandle>(window));
    } catch (const std::bad_alloc&) {
        enumeration.outOfMemory = true;
        return FALSE;
    }
    return TRUE;
}

}  // namespace

std::vector<WindowHandle> TopLevelWindows() {
    Enumeration enumeration;
    EnumWindows(KeepWindow, reinterpret_cast<LPARAM>(&enumeration));
    if (enumeration.outOfMemory) throw std::bad_alloc();
    return std::move(enumeration.windows);
}

bool WindowExists(WindowHandle window) {
    return IsWindow(Native(window)) != FALSE;
}

std::string WindowTitle(WindowHandle window) {
    const int length = GetWindowTextLengthA(Native(window));
    if (length <= 0) return {};
    std::string title(static_cast<std::size_t>(length) + 1, '\0');
    // The title can have become shorter since it was measured.
    const int copied = GetWindowTextA(Native(window), title.data(), length + 1);
    title.resize(static_cast<std::size_t>(copied));
    return title;
}

bool CanMakeTranslucent() {
    return GetProcAddress(GetModuleHandleA("user32.dll"), "SetLayeredWindowAttributes") != nullptr;
}

void MakeTranslucent(WindowHandle window, std::uint8_t alpha) {
    const LONG style = GetWindowLongA(Native(window), GWL_EXSTYLE);
    SetWindowLongA(Native(window), GWL_EXSTYLE, style | WS_EX_LAYERED);
    SetLayeredWindowAttributes(Native(window), 2, alpha, LWA_ALPHA);  // the colour key is not looked at
}

void MakeOpaque(WindowHandle window) {
    const LONG style = GetWindowLongA(Native(window), GWL_EXSTYLE);
    SetWindowLongA(Native(window), GWL_EXSTYLE, style & ~static_cast<LONG>(WS_EX_LAYERED));
    RedrawWindow(Native(window), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

bool WindowIsVisible(WindowHandle window) {
    return IsWindowVisible(Native(window)) != FALSE;
}

bool WindowIsMinimized(WindowHandle window) {
    return IsIconic(Native(window)) != FALSE;
}

void ShowHiddenWindow(WindowHandle window) {
    ShowWindow(Native(window), SW_SHOW);
}

void RestoreMinimizedWindow(WindowHandle window) {
    SendMessageA(Native(window), WM_SYSCOMMAND, SC_RESTORE, 0);
}

}  // namespace os
