// TopWindows: the top-level windows of all programs: finding them, reading their titles, and changing how
// they are shown. A window can be gone by the time it is asked about; then nothing happens. Nothing throws,
// but for want of memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "os/WindowHandle.h"

namespace os {

// All top-level windows, the topmost first.
std::vector<WindowHandle> TopLevelWindows();

bool WindowExists(WindowHandle window);

// The title in the ANSI code page; the window's program is not asked, so a hung one delays nobody.
std::string WindowTitle(WindowHandle window);

// Whether the system has layered windows (Windows 2000 and later).
bool CanMakeTranslucent();

// Makes the window a layered one with this alpha: 0 cannot be seen, 255 is opaque.
void MakeTranslucent(WindowHandle window, std::uint8_t alpha);

// Makes it an ordinary window again and has it drawn anew with all its children.
void MakeOpaque(WindowHandle window);

bool WindowIsVisible(WindowHandle window);
bool WindowIsMinimized(WindowHandle window);
void ShowHiddenWindow(WindowHandle window);
// Asks the window to restore itself, as its system menu would, and waits for its answer.
void RestoreMinimizedWindow(WindowHandle window);

}  // namespace os
