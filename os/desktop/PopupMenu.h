// PopupMenu: shows a menu at a place on the screen and waits for the choice. What the menu holds is kept and
// changed elsewhere (ui/popupmenu); this is drawing, mouse and keyboard.
//
// While the menu is open messages are pumped: sockets, timers and windows go on. The request is the caller's
// own and must live, unchanged, until the call returns; nothing else is kept.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "os/desktop/Icons.h"
#include "os/desktop/WindowHandle.h"

namespace os {

enum class MenuEntryKind : std::uint8_t { Item, Separator, Header };

struct MenuEntry {
    std::int32_t id = 0;      // positive, unique in the menu
    std::int32_t parent = 0;  // the id of the entry whose sub-menu holds this one; 0 at the top
    MenuEntryKind kind = MenuEntryKind::Item;
    std::string caption;  // "&" marks the letter that chooses the entry, "&&" is a "&"
    IconHandle icon = 0;
    bool checked = false;
    bool enabled = true;
    bool isDefault = false;  // shown bold
};

// Colours as 0xRRGGBB.
struct MenuColours {
    std::uint32_t background;
    std::uint32_t text;
    std::uint32_t disabledText;
    std::uint32_t selected;  // behind the entry under the mouse
    std::uint32_t selectedText;
    std::uint32_t separator;
    std::uint32_t header;  // behind headers
    std::uint32_t headerText;

    bool operator==(const MenuColours&) const = default;
};

struct MenuRequest {
    // The window that the menu belongs to; it should be in the foreground, or a click elsewhere does not
    // close the menu.
    WindowHandle owner = 0;
    // In the order of display; an entry comes after its parent.
    std::vector<MenuEntry> entries;
    // Without colours the system's are used, so that high-contrast schemes are kept.
    std::optional<MenuColours> colours;
    int x = 0;  // screen pixels
    int y = 0;
};

// The id of the chosen entry; 0 when nothing was chosen (Esc, a click elsewhere, another menu being open, or
// a menu that cannot be shown). Separators, headers, disabled entries and entries with a sub-menu are never
// chosen. Arrows, letters, Enter and Esc work as in every menu of the system.
std::int32_t PopUpMenu(const MenuRequest& request);

// Where the mouse is, in screen pixels.
ScreenPoint CursorPosition();

}  // namespace os
