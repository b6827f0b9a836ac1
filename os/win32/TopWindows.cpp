#include "os/desktop/TopWindows.h"

#include <windows.h>

#include <new>

#include "os/win32/WideText.h"
#include "os/win32/WindowChanger.h"

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

// The system's own copy of the title: asking for it sends the window no message.
std::string WindowTitle(WindowHandle window) {
    constexpr int kMaxLength = 512;
    wchar_t wide[kMaxLength];
    const int length = InternalGetWindowText(Native(window), wide, kMaxLength);
    return BytesOf(CP_ACP, {wide, static_cast<std::size_t>(length)}, true);
}

bool CanMakeTranslucent() {
    return GetProcAddress(GetModuleHandleA("user32.dll"), "SetLayeredWindowAttributes") != nullptr;
}

void MakeTranslucent(WindowHandle window, std::uint8_t alpha) {
    AskWindowChanger(Native(window), alpha);
}

void MakeOpaque(WindowHandle window) {
    AskWindowChanger(Native(window), {});
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
