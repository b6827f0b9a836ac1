// modMenu: what stands in the tray menu, and what each entry does.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "app/shell/fSysTrayIconMenu.h"
#include "os/desktop/WindowHandle.h"
#include "ui/popupmenu/ImageList.h"

namespace modMenu {

// Loads the icons of the menu's entries under the indices that BuildTrayMenu uses.
void LoadMenuIcons(ImageList& images);

// Makes the tray host: its icon, its menu and its tooltip. The window is the main form's: it owns icon and
// menu, and web pages are opened in its name. The icon is the host's own, which is the program's too. The
// images must outlive the host. The caller binds the host's notifications.
std::unique_ptr<fSysTrayIconMenu> BuildTrayMenu(os::WindowHandle hWnd, ImageList& images);

// The icon's tip: the program's name, and what is wrong with the last sign-on, or who is signed on as far as
// there is room.
std::string TipText();

// The default entry, which a double click on the icon stands for.
inline constexpr char kOpenKey[] = "open";

// Carries out the command of a key. Keys are compared exactly; an unknown one does nothing. Failures are
// reported under "modMenu:DoMenuCommand".
void DoMenuCommand(const std::string& sKey);

// The about box's three lines. An author or home page that the build does not name is told as such.
std::string AboutText(std::string_view author, std::string_view homePage);

// Opens a page of the maker's, called `what` in messages. An address that the build does not name, or that
// cannot be opened, is told in a message box.
void OpenMakerPage(const std::string& address, const std::string& what);

}  // namespace modMenu
