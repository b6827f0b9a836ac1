// WindowChanger: a thread that changes the style of other programs' windows, and owns nothing else. Setting a
// style sends messages to the window's thread and waits; when that hangs, or waits for us, only this thread
// stands still.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

namespace os {

// Asks for the window to become translucent with the alpha, or ordinary again without one, by the rules of
// os/desktop/TopWindows.h. Returns at once; what cannot be asked for is not done.
void AskWindowChanger(HWND window, std::optional<std::uint8_t> alpha);

}  // namespace os
