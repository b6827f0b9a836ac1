// FakeTray: a notification area with room for the icon of the program under test.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "os/Tray.h"

namespace os::fake {

// The icon in the area, as it was added or changed last; nothing when there is none.
const std::optional<TrayRecord>& ShownTrayIcon();
std::string ShownTip();

// How often TrayWindow::Add was called.
int TrayAdds();

// Without a taskbar adding and changing fail.
void SetTaskbar(bool present);
// The taskbar starts anew: the icon is lost and the windows are told.
void RestartTaskbar();

// What the system sends when the mouse does something on the icon.
void SendTrayCallback(std::uint32_t message);

}  // namespace os::fake
