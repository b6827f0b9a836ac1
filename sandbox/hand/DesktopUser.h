// DesktopUser: what somebody at the screen sees and does, for tests on the real desktop. Whoever waits here
// waits with a bound.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

// Asks until the answer is yes, without handling messages; false when patience (10 s) is over.
bool Eventually(const std::function<bool()>& answer);

// Presses the keys together and lets them go in reverse.
void PressKeys(const std::vector<BYTE>& keys);
inline void PressKey(BYTE key) {
    PressKeys({key});
}
// Types a character for each 16-bit unit, whatever the keyboard has on its keys.
void TypeText(const std::wstring& text);
void ClickAt(LONG x, LONG y, DWORD button = MOUSEEVENTF_LEFTDOWN | MOUSEEVENTF_LEFTUP);

// The hidden window that owns the tray icon.
HWND TrayWindowHandle();
// The place of the only icon in the notification area, at the right end of the taskbar.
POINT IconPlace();
// Whether a tooltip on the screen says the text.
bool TooltipSays(const std::wstring& text);

// The windows of open menus, the one opened last first.
std::vector<HWND> OpenMenus();
// Waits until so many menus are open and the menu's loop has taken over mouse and keyboard (a menu's window
// is on the screen a little earlier), or is gone.
bool MenusOpen(std::size_t count);
// What a screen reader says of the selected entry in the menu that was opened last; empty when none is.
std::wstring SelectedEntry();
// Presses Down until the entry is selected. A press is repeated when nothing comes of it: the pointer, which
// rests on the menu's edge, can take the selection away.
bool GoDownTo(const std::wstring& entry);
