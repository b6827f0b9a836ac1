// TopWindows: the top-level windows of all programs: finding them, reading their titles, and changing how
// they are shown. A window can be gone by the time it is asked about; then nothing happens. Nothing throws,
// but for want of memory.
//
// No call waits for the program of a foreign window, which may hang. What has to wait for it, a change of the
// window's style, is done later, beside the program; while a window hangs, the others have their turn.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "os/desktop/WindowHandle.h"

namespace os {

// All top-level windows, the topmost first.
std::vector<WindowHandle> TopLevelWindows();

bool WindowExists(WindowHandle window);

// The title in the ANSI code page, as far as 511 characters.
std::string WindowTitle(WindowHandle window);

// Whether the system has layered windows (Windows 2000 and later).
bool CanMakeTranslucent();

// Asks for the window to become a layered one with this alpha: 0 cannot be seen, 255 is opaque. A window that
// its own program has made layered is left alone, and so is one that refuses.
void MakeTranslucent(WindowHandle window, std::uint8_t alpha);

// Asks for a window that MakeTranslucent has made layered, in this run of the program or an earlier one, to
// become an ordinary one again and to be drawn anew with all its children. Others are left alone. Of two
// things asked of a window the later one counts.
void MakeOpaque(WindowHandle window);

bool WindowIsVisible(WindowHandle window);
bool WindowIsMinimized(WindowHandle window);
void ShowHiddenWindow(WindowHandle window);
// Asks the window to restore itself, as its system menu would, and waits for its answer.
void RestoreMinimizedWindow(WindowHandle window);

}  // namespace os
