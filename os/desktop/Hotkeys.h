// Hotkeys: key combinations that reach the program whichever window has the keyboard, and the global atoms
// whose numbers identify them (RegisterHotKey and GlobalAddAtom of the Windows API).
//
// A press arrives at the window as message kHotkeyMessage: wParam is the identifier, the low word of lParam
// holds the modifiers and the high word the virtual-key code.
#pragma once

#include <cstdint>
#include <string>

#include "os/desktop/WindowHandle.h"

namespace os {

inline constexpr std::uint32_t kHotkeyMessage = 786;  // WM_HOTKEY

namespace HotkeyModifier {
inline constexpr std::uint32_t Alt = 1;
inline constexpr std::uint32_t Ctrl = 2;
inline constexpr std::uint32_t Shift = 4;
inline constexpr std::uint32_t Win = 8;
}  // namespace HotkeyModifier

// Adds a text of at most 255 bytes to the system's table of global atoms and returns its number, never 0.
// Throws RuntimeError with the system's error number and its text for it (which can be empty).
std::uint16_t AddGlobalAtom(const std::string& text);

// Takes one reference off the atom; an unknown number is no error.
void DeleteGlobalAtom(std::uint16_t atom);

// Asks for a key combination for a window of this thread; a key that is held down repeats on old systems
// only. The `id` must be unique among the window's hotkeys.
// Throws RuntimeError as AddGlobalAtom does, for instance with 1409 when somebody holds the combination.
void RegisterHotkey(WindowHandle window, std::int32_t id, std::uint32_t modifiers, std::uint32_t key);

// Gives the combination back; an unknown identifier is no error.
void UnregisterHotkey(WindowHandle window, std::int32_t id);

// The milliseconds since the system's start, which wrap after 49.7 days; part of what makes atoms unique.
std::uint32_t SystemTicks();

}  // namespace os
