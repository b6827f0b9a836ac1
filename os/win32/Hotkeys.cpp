#include "os/desktop/Hotkeys.h"

#include "os/win32/SystemError.h"

namespace os {
namespace {

static_assert(kHotkeyMessage == WM_HOTKEY);
static_assert(HotkeyModifier::Alt == MOD_ALT && HotkeyModifier::Ctrl == MOD_CONTROL &&
              HotkeyModifier::Shift == MOD_SHIFT && HotkeyModifier::Win == MOD_WIN);

// Hotkeys have always been refused in the system's words as they stand, line break included.
[[noreturn]] void ThrowSystemsWords() {
    const DWORD number = GetLastError();
    throw RuntimeError(static_cast<std::int32_t>(number), SystemErrorText(number));
}

// From Windows 7 (6.1) on a key that is held down does not repeat; earlier systems refuse the flag.
UINT NoRepeat() {
    const DWORD version = GetVersion();
    const auto number = MAKEWORD(HIBYTE(version), LOBYTE(version));
    return number >= 0x0601 ? 0x4000 : 0;  // MOD_NOREPEAT
}

}  // namespace

std::uint16_t AddGlobalAtom(const std::string& text) {
    const ATOM atom = GlobalAddAtomA(text.c_str());
    if (atom == 0) ThrowSystemsWords();
    return atom;
}

void DeleteGlobalAtom(std::uint16_t atom) {
    GlobalDeleteAtom(atom);
}

void RegisterHotkey(WindowHandle window, std::int32_t id, std::uint32_t modifiers, std::uint32_t key) {
    if (!RegisterHotKey(reinterpret_cast<HWND>(window), id, modifiers | NoRepeat(), key)) ThrowSystemsWords();
}

void UnregisterHotkey(WindowHandle window, std::int32_t id) {
    UnregisterHotKey(reinterpret_cast<HWND>(window), id);
}

std::uint32_t SystemTicks() {
    return GetTickCount();
}

}  // namespace os
