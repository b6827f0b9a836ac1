// Where a dialog opens, and how one scrolls that is higher than its screen (a large dialog at 200 % on a
// screen of 768 lines).
#include <algorithm>

#include "os/win32/DialogImpl.h"

namespace os {
namespace {

LONG WidthOf(const RECT& rect) {
    return rect.right - rect.left;
}
LONG HeightOf(const RECT& rect) {
    return rect.bottom - rect.top;
}

// The working area of the screen that the pointer is on; an empty one if the system does not know.
RECT PointersScreen() {
    POINT pointer{};
    GetCursorPos(&pointer);
    MONITORINFO screen{};
    screen.cbSize = sizeof(screen);
    GetMonitorInfoA(MonitorFromPoint(pointer, MONITOR_DEFAULTTONEAREST), &screen);
    return screen.rcWork;
}

// The middle of the area and `offset` further, with the title bar always within.
void Centre(HWND window, const RECT& area, LONG offset) {
    RECT frame;
    GetWindowRect(window, &frame);
    const auto within = [offset](LONG begin, LONG room, LONG size) {
        const LONG middle = begin + (room - size) / 2;
        return std::max(begin, std::min(middle + offset, begin + std::max(room - size, LONG{0})));
    };
    SetWindowPos(window, nullptr, within(area.left, WidthOf(area), WidthOf(frame)),
                 within(area.top, HeightOf(area), HeightOf(frame)), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

void Dialog::Impl::Place(const Opening& opening) {
    const RECT area = PointersScreen();
    if (HeightOf(area) <= 0) return;
    if (CanBeResized(table)) {
        FitInside(area);
        Centre(window, area, 0);
        return PlaceAt(opening.place);
    }
    const LONG offset = opening.step * (GetSystemMetrics(SM_CYCAPTION) + GetSystemMetrics(SM_CYFIXEDFRAME));
    // Twice, because a window that moves to a screen of another resolution changes its size.
    for (int time = 0; time < 2; ++time) {
        FitHeight(static_cast<int>(HeightOf(area)));
        Centre(window, area, offset);
    }
}

// Makes the frame as high as the table wants, but not higher than `most` pixels; what does not fit is
// reached with a scroll bar.
void Dialog::Impl::FitHeight(int most) {
    ScrollTo(0);
    RECT inside{0, 0, table.width, table.height};
    MapDialogRect(window, &inside);
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)) & ~DWORD{WS_VSCROLL};
    RECT frame = inside;
    AdjustWindowRectEx(&frame, style, FALSE, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
    const bool scrolls = HeightOf(frame) > most;
    const bool didScroll = (GetWindowLongPtrW(window, GWL_STYLE) & WS_VSCROLL) != 0;
    if (!scrolls && !didScroll) return;

    ShowScrollBar(window, SB_VERT, scrolls);
    const LONG bar = scrolls ? GetSystemMetrics(SM_CXVSCROLL) : 0;
    const LONG height = std::min<LONG>(HeightOf(frame), most);
    SetWindowPos(window, nullptr, 0, 0, WidthOf(frame) + bar, height,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    RECT client;
    GetClientRect(window, &client);
    SCROLLINFO range{sizeof(SCROLLINFO),
                     SIF_RANGE | SIF_PAGE | SIF_POS,
                     0,
                     scrolls ? inside.bottom - 1 : 0,
                     static_cast<UINT>(client.bottom),
                     0,
                     0};
    if (scrolls) SetScrollInfo(window, SB_VERT, &range, TRUE);
}

void Dialog::Impl::ScrollTo(int position) {
    if ((GetWindowLongPtrW(window, GWL_STYLE) & WS_VSCROLL) == 0) return;
    SCROLLINFO info{sizeof(SCROLLINFO), SIF_POS, 0, 0, 0, position, 0};
    SetScrollInfo(window, SB_VERT, &info, TRUE);
    info.fMask = SIF_POS;  // as far as the range lets it
    GetScrollInfo(window, SB_VERT, &info);
    const int distance = scrolled - info.nPos;
    scrolled = info.nPos;
    if (distance != 0)
        ScrollWindowEx(window, 0, distance, nullptr, nullptr, nullptr, nullptr,
                       SW_SCROLLCHILDREN | SW_INVALIDATE | SW_ERASE);
}

void Dialog::Impl::BringIntoView(HWND control) {
    if (!IsChild(window, control)) return;
    RECT place;
    RECT client;
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
    GetClientRect(window, &client);
    if (place.bottom > client.bottom) ScrollTo(scrolled + static_cast<int>(place.bottom - client.bottom));
    if (place.top < 0) ScrollTo(scrolled + static_cast<int>(place.top));
}

void Dialog::Impl::WhenBarMoved(int request) {
    SCROLLINFO info{sizeof(SCROLLINFO), SIF_ALL, 0, 0, 0, 0, 0};
    GetScrollInfo(window, SB_VERT, &info);
    const int page = static_cast<int>(info.nPage);
    switch (request) {
        case SB_LINEUP:
            return ScrollTo(scrolled - page / 10);
        case SB_LINEDOWN:
            return ScrollTo(scrolled + page / 10);
        case SB_PAGEUP:
            return ScrollTo(scrolled - page);
        case SB_PAGEDOWN:
            return ScrollTo(scrolled + page);
        case SB_TOP:
            return ScrollTo(0);
        case SB_BOTTOM:
            return ScrollTo(info.nMax);
        case SB_THUMBPOSITION:
        case SB_THUMBTRACK:
            return ScrollTo(info.nTrackPos);
        default:
            return;
    }
}

}  // namespace os
