// Virtual lists: the control keeps nothing but how many rows there are, which is selected and where it is
// scrolled to, and asks for the texts of what it draws.
#include <algorithm>

#include "base/Trap.h"
#include "os/win32/DialogImpl.h"

namespace os {
namespace {

using Kind = ControlKind;

int Ask(HWND list, UINT message, int wParam = 0, LPARAM lParam = 0) {
    return static_cast<int>(SendMessageW(list, message, static_cast<WPARAM>(wParam), lParam));
}

// Of one row, in pixels; 0 while there is none.
int RowHeight(HWND list) {
    RECT row{LVIR_BOUNDS, 0, 0, 0};
    return Ask(list, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row)) != 0
               ? static_cast<int>(row.bottom - row.top)
               : 0;
}

}  // namespace

void Dialog::ProvideRows(ControlId control, CellText text) {
    impl_->Window(control, Kind::VirtualList);
    impl_->controls[RowOf(impl_->table, control)].cellText = std::move(text);
}

void Dialog::SetRows(ControlId control, int count, int gone) {
    const Quiet quietly(impl_->quiet);
    const HWND list = impl_->Window(control, Kind::VirtualList);
    const int before = Ask(list, LVM_GETITEMCOUNT);
    const int top = Ask(list, LVM_GETTOPINDEX);
    const int selected = Value(control);
    const int seen = Ask(list, LVM_GETCOUNTPERPAGE);
    const bool follows = selected < 0 && (before == 0 || top + seen >= before);

    if (gone > 0 && selected >= 0) SetValue(control, -1);
    if (count != before) Ask(list, LVM_SETITEMCOUNT, count, LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
    if (gone > 0 && selected >= gone && selected - gone < count) SetValue(control, selected - gone);
    const int newTop = std::clamp(top - gone, 0, std::max(count - 1, 0));
    if (follows && count > 0) {
        Ask(list, LVM_ENSUREVISIBLE, count - 1, FALSE);
    } else if (const int rows = newTop - Ask(list, LVM_GETTOPINDEX); rows != 0) {
        Ask(list, LVM_SCROLL, 0, static_cast<LPARAM>(rows) * RowHeight(list));
    }
    impl_->DrawRows(RowOf(impl_->table, control), top, top + seen);
    if (count < before) RedrawWindow(list, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_NOCHILDREN);
    UpdateWindow(list);
}

// Drawing costs far more than asking for texts: so of the rows that were in view already, from `top` to
// `bottom`, those are drawn again that have changed. The control itself draws what has come into view.
void Dialog::Impl::DrawRows(std::size_t row, int top, int bottom) {
    auto& control = controls[row];
    const HWND list = control.window;
    const auto header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    const int columns = Ask(header, HDM_GETITEMCOUNT);
    const int first = Ask(list, LVM_GETTOPINDEX);
    const int end = std::min(first + Ask(list, LVM_GETCOUNTPERPAGE) + 1, Ask(list, LVM_GETITEMCOUNT));
    std::vector<std::string> texts;
    for (int item = first; item < end; ++item) {
        auto& text = texts.emplace_back();
        for (int column = 0; column < columns; ++column) text += CellOf(row, item, column) + '\t';
        const auto place = static_cast<std::size_t>(item - control.firstKnown);
        const bool isKnown = item >= control.firstKnown && place < control.known.size();
        const bool wasInView = item >= top && item <= bottom;
        if (isKnown ? text != control.known[place] : wasInView) Ask(list, LVM_REDRAWITEMS, item, item);
    }
    control.firstKnown = first;
    control.known = std::move(texts);
}

void Dialog::ShowRow(ControlId control, int row) {
    Ask(impl_->Window(control, IsList), LVM_ENSUREVISIBLE, row, FALSE);
}

// The last column takes what the others leave; there is always room for the bar that scrolls down.
void Dialog::Impl::FillLastColumn(std::size_t row) const {
    const HWND list = controls[row].window;
    const auto header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    const int last = Ask(header, HDM_GETITEMCOUNT) - 1;
    if (last < 0) return;
    RECT inside;
    GetWindowRect(list, &inside);
    int room = static_cast<int>(inside.right - inside.left) - GetSystemMetrics(SM_CXVSCROLL) -
               2 * GetSystemMetrics(SM_CXEDGE);
    for (int column = 0; column < last; ++column) room -= Ask(list, LVM_GETCOLUMNWIDTH, column);
    RECT wanted{0, 0, controls[row].lastColumn, 0};
    MapDialogRect(window, &wanted);
    Ask(list, LVM_SETCOLUMNWIDTH, last, MAKELPARAM(std::max(room, static_cast<int>(wanted.right)), 0));
}

std::string Dialog::Impl::CellOf(std::size_t row, int listRow, int column) const {
    const auto& provide = controls[row].cellText;
    if (!provide) return {};
    const std::string where = std::string("Dialog:") + table.controls[row].name;
    return Trap(where.c_str(), [&] { return provide(listRow, column); });
}

std::optional<LONG_PTR> Dialog::Impl::WhenListAsks(std::size_t row, NMHDR& header) {
    if (table.controls[row].kind != Kind::VirtualList) return {};
    // No row is found by typing: 0 would be the first one.
    if (header.code == static_cast<UINT>(LVN_ODFINDITEMA) ||
        header.code == static_cast<UINT>(LVN_ODFINDITEMW))
        return -1;
    if (header.code != static_cast<UINT>(LVN_GETDISPINFOW)) return {};
    auto& item = reinterpret_cast<NMLVDISPINFOW&>(header).item;
    if ((item.mask & LVIF_TEXT) == 0 || item.cchTextMax <= 0) return 0;
    const auto text = Wide(CellOf(row, item.iItem, item.iSubItem));
    const auto length = text.copy(item.pszText, static_cast<std::size_t>(item.cchTextMax) - 1);
    item.pszText[length] = L'\0';
    return 0;
}

}  // namespace os
