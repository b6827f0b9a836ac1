// FakeTray: what a tray program shows of itself: its main window, its icon in a notification area with room
// for one, and its menus.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "os/desktop/Foreground.h"
#include "os/desktop/MainWindow.h"
#include "os/desktop/PopupMenu.h"
#include "os/desktop/Tray.h"
#include "os/fake/FakeWorld.h"

namespace os::fake {

struct Tray {
    std::optional<TrayRecord> shown;  // as it was added or changed last
    bool hasTaskbar = true;           // without one adding and changing fail
    int adds = 0;                     // calls of TrayWindow::Add
    WindowHandle foreground = 0;      // the window that was brought there last
};
inline Tray& tray = Fresh<Tray>();
std::string ShownTip();

// The taskbar starts anew: the icon is lost and the windows are told.
void RestartTaskbar();

// What the system sends when the mouse does something on the icon.
void SendTrayCallback(std::uint32_t message);

struct Menus {
    // Decides what is chosen in a menu: an id, or 0 for nothing, as without a chooser. An id that could not
    // be chosen on a screen (no such entry, disabled, a header, a separator, an entry with a sub-menu) throws
    // std::logic_error from PopUpMenu.
    std::function<std::int32_t(const MenuRequest&)> chooser;
    int iconSize = 16;  // of small icons, everywhere
    // Icons that were loaded and not released yet. Resource 0 is one that the program lacks; the handle of
    // another is a thousand times its size and its number.
    int icons = 0;
};
inline Menus& menus = Fresh<Menus>();

// The main window that was made last, nullptr when it is gone; and the command line, which stays.
inline MainWindow* mainWindow = nullptr;
inline std::string commandLineArguments;

}  // namespace os::fake
