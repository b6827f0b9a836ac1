// MenuPainter: how the entries of a popup menu look: their sizes, colours and strokes. Every length follows
// the resolution of the screen that the menu is on, and the system's menu font.
#pragma once

#include "os/desktop/PopupMenu.h"
#include "os/win32/Gdi.h"

namespace os {

class MenuPainter {
 public:
    // For a menu at this place on the screen.
    MenuPainter(const std::optional<MenuColours>& colours, ScreenPoint place);

    // The entry's width and height in pixels, as WM_MEASUREITEM wants them.
    SIZE Measure(const MenuEntry& entry) const;
    // Draws the entry for WM_DRAWITEM. The system's own arrow at a sub-menu is kept from being drawn, since
    // it would have the system's colour.
    void Draw(const MenuEntry& entry, bool hasSubMenu, const DRAWITEMSTRUCT& draw) const;
    // For the strips of the menu that no entry covers. Valid as long as the painter.
    HBRUSH Background() const { return background_.get(); }

 private:
    int Scaled(int pixelsAt96) const { return MulDiv(pixelsAt96, dpi_, 96); }
    HFONT FontOf(const MenuEntry& entry) const;
    int LeftColumn() const { return iconSize_ + 2 * Scaled(6); }
    void DrawMark(HDC context, const RECT& column, const MenuEntry& entry, COLORREF colour) const;
    void DrawIconIn(HDC context, const RECT& column, const MenuEntry& entry) const;
    void DrawCaption(HDC context, RECT area, const MenuEntry& entry, const DRAWITEMSTRUCT& draw,
                     COLORREF colour) const;
    void DrawArrow(HDC context, const RECT& entry, COLORREF colour) const;

    MenuColours colours_;
    int dpi_;
    int iconSize_;
    UniqueGdi<HFONT> font_;
    UniqueGdi<HFONT> boldFont_;
    UniqueGdi<HBRUSH> background_;
};

}  // namespace os
