// FakePopupMenu: the menus that the program under test shows, and what is chosen in them.
#pragma once

#include <functional>

#include "os/PopupMenu.h"

namespace os::fake {

// Decides what is chosen in the menus shown from now on: gets the menu and returns an id, or 0 for nothing.
// An id that could not be chosen on a screen (no such entry, disabled, a header, a separator, an entry with a
// sub-menu) throws std::logic_error from PopUpMenu. Without a chooser every menu is dismissed.
void SetMenuChooser(std::function<std::int32_t(const MenuRequest&)> chooser);

void SetCursorPosition(ScreenPoint position);

// How many icons were loaded (Icons.h) and not released yet. Resource 0 is one that the program lacks.
int LoadedIcons();

}  // namespace os::fake
