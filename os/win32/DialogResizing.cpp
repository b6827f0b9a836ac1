// Windows that the user can resize: where their controls go, how small they get, and where they open again.
#include <algorithm>

#include "os/win32/DialogImpl.h"
#include "os/win32/DialogTemplate.h"

namespace os {
namespace {

using Kind = ControlKind;

RECT Mapped(HWND window, const DialogRect& rect) {
    RECT pixels{rect.left, rect.top, rect.left + rect.width, rect.top + rect.height};
    MapDialogRect(window, &pixels);
    return pixels;
}

RECT Mapped(HWND window, int width, int height) {
    RECT pixels{0, 0, width, height};
    MapDialogRect(window, &pixels);
    return pixels;
}

// The frame of a window with this inside.
SIZE FrameOf(HWND window, const RECT& inside) {
    RECT frame = inside;
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
    return {frame.right - frame.left, frame.bottom - frame.top};
}

// Letters of equal width, as high as the dialog's own.
HFONT FixedFont(HFONT dialogFont) {
    LOGFONTA font{};
    GetObjectA(dialogFont, sizeof(font), &font);
    font.lfPitchAndFamily = FIXED_PITCH | FF_MODERN;
    lstrcpynA(font.lfFaceName, "Courier New", LF_FACESIZE);
    font.lfQuality = DEFAULT_QUALITY;
    return CreateFontIndirectA(&font);
}

}  // namespace

// The pages lie over the inside of the tab strip.
void Dialog::Impl::PlacePages() {
    const auto tabs = FirstOfKind(table, Kind::TabStrip);
    if (tabs == controls.size()) return;
    const HWND strip = GetDlgItem(window, ControlWindowId(table, tabs));
    RECT inside;
    GetWindowRect(strip, &inside);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&inside), 2);
    SendMessageW(strip, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&inside));
    for (const HWND page : pages)
        SetWindowPos(page, HWND_TOP, inside.left, inside.top, inside.right - inside.left,
                     inside.bottom - inside.top, SWP_NOACTIVATE);
}

// The system sets its font anew after a change of resolution, and is answered with ours.
void Dialog::Impl::GiveFixedFonts() {
    const auto current = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    for (std::size_t row = 0; row < controls.size(); ++row) {
        if (table.controls[row].kind != Kind::FixedText) continue;
        if (fixedFont == nullptr || fixedFontOf != current) {
            if (fixedFont != nullptr) DeleteObject(fixedFont);
            fixedFont = FixedFont(current);
            fixedFontOf = current;
        }
        if (reinterpret_cast<HFONT>(SendMessageW(controls[row].window, WM_GETFONT, 0, 0)) != fixedFont)
            SendMessageW(controls[row].window, WM_SETFONT, reinterpret_cast<WPARAM>(fixedFont), TRUE);
    }
}

void Dialog::Impl::Arrange() {
    if (!CanBeResized(table) || controls.back().window == nullptr || IsIconic(window)) return;
    RECT client;
    GetClientRect(window, &client);
    const RECT inside = Mapped(window, table.width, table.height);
    const LONG wider = client.right - inside.right;
    const LONG higher = client.bottom - inside.bottom;
    for (std::size_t row = 0; row < controls.size(); ++row) {
        const Control& control = table.controls[row];
        DialogRect units = control.rect;
        units.height = TemplateHeight(control);
        RECT place = Mapped(window, units);
        Stretch(units.anchors, wider, higher, place);
        SetWindowPos(controls[row].window, nullptr, place.left, place.top,
                     std::max<LONG>(place.right - place.left, 0), std::max<LONG>(place.bottom - place.top, 0),
                     SWP_NOZORDER | SWP_NOACTIVATE);
        if (control.kind == Kind::TabStrip) PlacePages();
        if (control.kind == Kind::VirtualList) FillLastColumn(row);
    }
    GiveFixedFonts();
    // What a control has moved off is not told to the others that lie there.
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void Dialog::Impl::TellLeastSize(MINMAXINFO& limits) const {
    if (!CanBeResized(table)) return;
    const auto frame = FrameOf(window, Mapped(window, table.leastWidth, table.leastHeight));
    limits.ptMinTrackSize = {frame.cx, frame.cy};
}

// Messages to one of the dialog's windows about its size and its colours.
INT_PTR Dialog::Impl::WhenLooksChange(HWND changed, UINT message, LPARAM lParam) {
    if (changed != window) return FALSE;
    if (message == WM_GETMINMAXINFO) {
        TellLeastSize(*reinterpret_cast<MINMAXINFO*>(lParam));
        return TRUE;
    }
    if (message == WM_SIZE) Arrange();
    if (message ==
        WM_SYSCOLORCHANGE) {  // told to top windows alone; lists and tabs keep colours of their own
        for (const auto& control : controls) SendMessageW(control.window, message, 0, 0);
    }
    return FALSE;
}

// The table's size, or as much of it as the screen has room for.
void Dialog::Impl::FitInside(const RECT& area) {
    const auto size = FrameOf(window, Mapped(window, table.width, table.height));
    SetWindowPos(window, nullptr, 0, 0, std::min(size.cx, area.right - area.left),
                 std::min(size.cy, area.bottom - area.top), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Dialog::Impl::PlaceAt(const WindowPlace& place) {
    if (place.width <= 0) return;
    RECT frame{place.left, place.top, place.left + 1, place.top + 1};
    MONITORINFO screen{};
    screen.cbSize = sizeof(screen);
    const HMONITOR monitor = MonitorFromRect(&frame, MONITOR_DEFAULTTONULL);
    if (monitor == nullptr || !GetMonitorInfoA(monitor, &screen)) return;
    const RECT& area = screen.rcWork;
    // Twice, because a window that moves to a screen of another resolution changes its size.
    for (int time = 0; time < 2; ++time) {
        const auto size = FrameOf(window, Mapped(window, std::max<int>(place.width, table.leastWidth),
                                                 std::max<int>(place.height, table.leastHeight)));
        const LONG width = std::min(size.cx, area.right - area.left);
        const LONG height = std::min(size.cy, area.bottom - area.top);
        SetWindowPos(window, nullptr, std::clamp<LONG>(place.left, area.left, area.right - width),
                     std::clamp<LONG>(place.top, area.top, area.bottom - height), width, height,
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

WindowPlace Dialog::Place() const {
    const HWND window = impl_->window;
    if (!CanBeResized(impl_->table)) return {};
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    GetWindowPlacement(window, &placement);
    RECT frame;
    GetWindowRect(window, &frame);
    const bool isMaximized = IsZoomed(window) != FALSE;
    if (isMaximized || IsIconic(window)) frame = placement.rcNormalPosition;
    const auto none = FrameOf(window, RECT{});
    const RECT thousand = Mapped(window, 1000, 1000);
    return {
        static_cast<int>(frame.left), static_cast<int>(frame.top),
        MulDiv(static_cast<int>(frame.right - frame.left - none.cx), 1000, static_cast<int>(thousand.right)),
        MulDiv(static_cast<int>(frame.bottom - frame.top - none.cy), 1000, static_cast<int>(thousand.bottom)),
        isMaximized};
}

}  // namespace os
