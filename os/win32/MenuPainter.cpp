#include "os/win32/MenuPainter.h"

#include <algorithm>

#include "os/win32/Resolution.h"

namespace os {
namespace {

COLORREF ColorRef(std::uint32_t rgb) {
    return RGB(rgb >> 16 & 0xFF, rgb >> 8 & 0xFF, rgb & 0xFF);
}

std::uint32_t SystemColour(int index) {
    const auto colour = GetSysColor(index);
    return static_cast<std::uint32_t>(GetRValue(colour)) << 16 |
           static_cast<std::uint32_t>(GetGValue(colour)) << 8 | GetBValue(colour);
}

MenuColours SystemColours() {
    return {.background = SystemColour(COLOR_MENU),
            .text = SystemColour(COLOR_MENUTEXT),
            .disabledText = SystemColour(COLOR_GRAYTEXT),
            .selected = SystemColour(COLOR_HIGHLIGHT),
            .selectedText = SystemColour(COLOR_HIGHLIGHTTEXT),
            .separator = SystemColour(COLOR_3DSHADOW),
            .header = SystemColour(COLOR_3DFACE),
            .headerText = SystemColour(COLOR_BTNTEXT)};
}

void Fill(HDC context, const RECT& area, std::uint32_t rgb) {
    const UniqueGdi<HBRUSH> brush(CreateSolidBrush(ColorRef(rgb)));
    FillRect(context, &area, brush.get());
}

LONG Middle(LONG from, LONG to) {
    return from + (to - from) / 2;
}

UniqueGdi<HFONT> MenuFont(int dpi, bool bold) {
    NONCLIENTMETRICSA metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    metrics.lfMenuFont.lfHeight = ScaledFor(dpi, metrics.lfMenuFont.lfHeight);
    metrics.lfMenuFont.lfWidth = 0;  // what the font has at that height
    if (bold) metrics.lfMenuFont.lfWeight = FW_BOLD;
    return UniqueGdi<HFONT>(CreateFontIndirectA(&metrics.lfMenuFont));
}

// How much of a disabled entry's icon is seen, of 255.
constexpr BYTE kDisabledIconAlpha = 110;

}  // namespace

MenuPainter::MenuPainter(const std::optional<MenuColours>& colours, ScreenPoint place)
    : colours_(colours ? *colours : SystemColours()),
      dpi_(DpiAt(place)),
      iconSize_(SmallIconSize(place)),
      font_(MenuFont(dpi_, false)),
      boldFont_(MenuFont(dpi_, true)),
      background_(CreateSolidBrush(ColorRef(colours_.background))) {}

HFONT MenuPainter::FontOf(const MenuEntry& entry) const {
    const bool bold = entry.isDefault || entry.kind == MenuEntryKind::Header;
    return bold ? boldFont_.get() : font_.get();
}

SIZE MenuPainter::Measure(const MenuEntry& entry) const {
    if (entry.kind == MenuEntryKind::Separator) return {0, Scaled(7)};
    const ScreenDc screen;
    const Selected font(screen, FontOf(entry));
    RECT text{};
    DrawTextA(screen, entry.caption.c_str(), -1, &text, DT_CALCRECT | DT_SINGLELINE);
    const LONG textWidth = text.right - text.left;
    const LONG textHeight = text.bottom - text.top;
    // The system adds the width of its own check mark to that of every owner-drawn entry.
    const LONG width =
        LeftColumn() + Scaled(4) + textWidth + Scaled(28) - ScaledFor(dpi_, GetSystemMetrics(SM_CXMENUCHECK));
    return {width, std::max<LONG>(textHeight, iconSize_) + Scaled(6)};
}

void MenuPainter::Draw(const MenuEntry& entry, bool hasSubMenu, const DRAWITEMSTRUCT& draw) const {
    const HDC context = draw.hDC;
    const RECT area = draw.rcItem;
    const bool isHeader = entry.kind == MenuEntryKind::Header;
    Fill(context, area, isHeader ? colours_.header : colours_.background);

    if (entry.kind == MenuEntryKind::Separator) {
        const LONG middle = Middle(area.top, area.bottom);
        const LONG thickness = std::max(1, Scaled(1));
        Fill(context, {area.left + LeftColumn(), middle, area.right - Scaled(4), middle + thickness},
             colours_.separator);
        return;
    }

    const bool isSelected = (draw.itemState & ODS_SELECTED) != 0 && !isHeader;
    if (isSelected && entry.enabled) Fill(context, area, colours_.selected);
    // The keyboard reaches disabled entries too and must show where it is.
    if (isSelected && !entry.enabled) {
        const UniqueGdi<HBRUSH> frame(CreateSolidBrush(ColorRef(colours_.disabledText)));
        FrameRect(context, &area, frame.get());
    }

    auto colour = colours_.text;
    if (isSelected) colour = colours_.selectedText;
    if (!entry.enabled) colour = colours_.disabledText;
    if (isHeader) colour = colours_.headerText;

    const RECT column{area.left, area.top, area.left + LeftColumn(), area.bottom};
    if (entry.checked) DrawMark(context, column, entry, ColorRef(colour));
    if (entry.icon != 0) DrawIconIn(context, column, entry);
    DrawCaption(context, area, entry, draw, ColorRef(colour));
    if (!hasSubMenu) return;
    DrawArrow(context, area, ColorRef(colour));
    ExcludeClipRect(context, area.left, area.top, area.right, area.bottom);
}

// A tick; around an icon, which takes the tick's place, a frame.
void MenuPainter::DrawMark(HDC context, const RECT& column, const MenuEntry& entry, COLORREF colour) const {
    const LONG x = Middle(column.left, column.right);
    const LONG y = Middle(column.top, column.bottom);
    if (entry.icon != 0) {
        const LONG half = iconSize_ / 2 + Scaled(2);
        const RECT frame{x - half, y - half, x + half, y + half};
        const UniqueGdi<HBRUSH> brush(CreateSolidBrush(colour));
        FrameRect(context, &frame, brush.get());
        return;
    }
    const UniqueGdi<HPEN> pen(CreatePen(PS_SOLID, std::max(2, Scaled(2)), colour));
    const Selected selected(context, pen.get());
    const POINT tick[] = {{x - Scaled(4), y}, {x - Scaled(1), y + Scaled(3)}, {x + Scaled(4), y - Scaled(4)}};
    Polyline(context, tick, 3);
}

void MenuPainter::DrawIconIn(HDC context, const RECT& column, const MenuEntry& entry) const {
    const int x = static_cast<int>(Middle(column.left, column.right)) - iconSize_ / 2;
    const int y = static_cast<int>(Middle(column.top, column.bottom)) - iconSize_ / 2;
    const auto icon = reinterpret_cast<HICON>(entry.icon);
    if (entry.enabled) {
        DrawIconEx(context, x, y, icon, iconSize_, iconSize_, 0, nullptr, DI_NORMAL);
        return;
    }
    // The icon on what is behind it, and that laid thinly over the menu.
    const UniqueMemoryDc memory(CreateCompatibleDC(context));
    const UniqueGdi<HBITMAP> bitmap(CreateCompatibleBitmap(context, iconSize_, iconSize_));
    const Selected selected(memory.get(), bitmap.get());
    BitBlt(memory.get(), 0, 0, iconSize_, iconSize_, context, x, y, SRCCOPY);
    DrawIconEx(memory.get(), 0, 0, icon, iconSize_, iconSize_, 0, nullptr, DI_NORMAL);
    const BLENDFUNCTION blend{AC_SRC_OVER, 0, kDisabledIconAlpha, 0};
    GdiAlphaBlend(context, x, y, iconSize_, iconSize_, memory.get(), 0, 0, iconSize_, iconSize_, blend);
}

void MenuPainter::DrawCaption(HDC context, RECT area, const MenuEntry& entry, const DRAWITEMSTRUCT& draw,
                              COLORREF colour) const {
    // A header has no marks before it and its letter chooses nothing.
    const bool isHeader = entry.kind == MenuEntryKind::Header;
    area.left += isHeader ? Scaled(8) : LeftColumn() + Scaled(4);
    area.right -= Scaled(4);
    UINT format = DT_SINGLELINE | DT_VCENTER | DT_LEFT;
    if (isHeader || (draw.itemState & ODS_NOACCEL) != 0) format |= DT_HIDEPREFIX;
    const Selected font(context, FontOf(entry));
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, colour);
    DrawTextA(context, entry.caption.c_str(), -1, &area, format);
}

void MenuPainter::DrawArrow(HDC context, const RECT& entry, COLORREF colour) const {
    const LONG size = Scaled(4);
    const LONG x = entry.right - Scaled(8) - size;
    const LONG y = Middle(entry.top, entry.bottom);
    const POINT triangle[] = {{x, y - size}, {x + size, y}, {x, y + size}};
    const UniqueGdi<HBRUSH> brush(CreateSolidBrush(colour));
    const UniqueGdi<HPEN> pen(CreatePen(PS_SOLID, 1, colour));
    const Selected selectedBrush(context, brush.get());
    const Selected selectedPen(context, pen.get());
    Polygon(context, triangle, 3);
}

}  // namespace os
