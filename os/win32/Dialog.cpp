// The calls of a dialog: each is a message to a control's window.
#include "os/Dialog.h"

#include <string>

#include "os/win32/DialogImpl.h"
#include "os/win32/DialogTemplate.h"

namespace os {
namespace {

using Kind = ControlKind;

int Send(HWND control, UINT message, int wParam = 0, LPARAM lParam = 0) {
    return static_cast<int>(SendMessageA(control, message, static_cast<WPARAM>(wParam), lParam));
}

std::string WindowText(HWND window) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    const int length = GetWindowTextA(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Whether the system reads "&" in its caption as the mark of an access key.
bool HasAccessKey(Kind kind) {
    return IsButton(kind) || IsMarked(kind) || kind == Kind::GroupFrame;
}

void CheckPosition(int position, int count) {
    if (position < 0 || position >= count) ThrowInvalidArgument();
}

std::string CellText(HWND list, int row, int column) {
    std::string text(256, '\0');
    for (;;) {
        LVITEMA item{};
        item.iSubItem = column;
        item.pszText = text.data();
        item.cchTextMax = static_cast<int>(text.size());
        const auto length =
            static_cast<std::size_t>(Send(list, LVM_GETITEMTEXTA, row, reinterpret_cast<LPARAM>(&item)));
        if (length + 1 < text.size()) return text.substr(0, length);
        text.resize(text.size() * 2);
    }
}

void SetCellText(HWND list, UINT message, int row, int column, std::string text) {
    LVITEMA item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.iSubItem = column;
    item.pszText = text.data();
    Send(list, message, message == LVM_SETITEMTEXTA ? row : 0, reinterpret_cast<LPARAM>(&item));
}

void SelectRow(HWND list, int row, UINT state) {
    LVITEMA item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = state;
    Send(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
}

// Where the window goes when it opens: the middle of the working area of the pointer's screen, with its title
// bar always within.
void Centre(HWND window) {
    POINT pointer{};
    GetCursorPos(&pointer);
    MONITORINFO screen{};
    screen.cbSize = sizeof(screen);
    RECT frame;
    if (!GetMonitorInfoA(MonitorFromPoint(pointer, MONITOR_DEFAULTTONEAREST), &screen)) return;
    GetWindowRect(window, &frame);
    const RECT& area = screen.rcWork;
    const LONG left = area.left + (area.right - area.left - (frame.right - frame.left)) / 2;
    const LONG top = area.top + (area.bottom - area.top - (frame.bottom - frame.top)) / 2;
    SetWindowPos(window, nullptr, std::max(left, area.left), std::max(top, area.top), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

int Dialog::Impl::Value(std::size_t row) const {
    const HWND control = controls[row].window;
    switch (table.controls[row].kind) {
        case Kind::CheckBox:
        case Kind::OptionButton:
            return Send(control, BM_GETCHECK) == BST_CHECKED;
        case Kind::DropDownList:
            return Send(control, CB_GETCURSEL);
        case Kind::ListView:
            return Send(control, LVM_GETNEXTITEM, -1, LVNI_SELECTED);
        case Kind::TabStrip:
            return Send(control, TCM_GETCURSEL);
        case Kind::Slider:
            return Send(control, TBM_GETPOS);
        case Kind::ProgressBar:
            return Send(control, PBM_GETPOS);
        default:
            return 0;
    }
}

void Dialog::Impl::SetValue(std::size_t row, int value) {
    const Quiet quietly(quiet);
    const HWND control = controls[row].window;
    switch (table.controls[row].kind) {
        case Kind::OptionButton:
            if (value != 0)
                for (auto [other, end] = GroupOf(table, row); other < end; ++other)
                    Send(controls[other].window, BM_SETCHECK, BST_UNCHECKED);
            [[fallthrough]];
        case Kind::CheckBox:
            Send(control, BM_SETCHECK, value != 0 ? BST_CHECKED : BST_UNCHECKED);
            return;
        case Kind::DropDownList:
            if (value != -1) CheckPosition(value, Send(control, CB_GETCOUNT));
            Send(control, CB_SETCURSEL, value);
            return;
        case Kind::ListView:
            if (value != -1) CheckPosition(value, Send(control, LVM_GETITEMCOUNT));
            SelectRow(control, -1, 0);
            if (value != -1) SelectRow(control, value, LVIS_SELECTED | LVIS_FOCUSED);
            return;
        case Kind::TabStrip:
            CheckPosition(value, static_cast<int>(pages.size()));
            Send(control, TCM_SETCURSEL, value);
            return ShowCurrentPage();
        case Kind::Slider:
            Send(control, TBM_SETPOS, TRUE, value);
            controls[row].lastValue = Send(control, TBM_GETPOS);
            return;
        case Kind::ProgressBar:
            Send(control, PBM_SETPOS, value);
            return;
        default:
            ThrowInvalidArgument();
    }
}

Dialog::Dialog(const DialogTable& table) : impl_(std::make_unique<Impl>(*this, table)) {}

Dialog::~Dialog() = default;

const DialogTable& Dialog::Table() const {
    return impl_->table;
}

WindowHandle Dialog::Handle() const {
    return reinterpret_cast<WindowHandle>(impl_->window);
}

void Dialog::Show() {
    const HWND window = impl_->window;
    if (!IsShown()) {
        // Twice, because a window that moves to a screen of another resolution changes its size.
        Centre(window);
        Centre(window);
        ShowWindow(window, SW_SHOW);
        impl_->FocusFirst();
    }
    SetForegroundWindow(window);
}

void Dialog::Close() {
    ShowWindow(impl_->window, SW_HIDE);
}

bool Dialog::IsShown() const {
    return IsWindowVisible(impl_->window) != FALSE;
}

void Dialog::On(ControlId control, Handler handler) {
    impl_->Window(control, TakesInput);
    impl_->controls[RowOf(impl_->table, control)].on = std::move(handler);
}

void Dialog::OnEnter(ControlId control, Handler handler) {
    impl_->Window(control, Kind::TextBox);
    impl_->controls[RowOf(impl_->table, control)].onEnter = std::move(handler);
}

void Dialog::OnFull(ControlId control, Handler handler) {
    impl_->Window(control, IsText);
    impl_->controls[RowOf(impl_->table, control)].onFull = std::move(handler);
}

std::string Dialog::Text(ControlId control) const {
    const auto row = RowOf(impl_->table, control);
    const Kind kind = impl_->table.controls[row].kind;
    if (kind == Kind::DropDownList) {
        const int chosen = impl_->Value(row);
        return chosen < 0 ? std::string() : Entry(control, chosen);
    }
    const auto text = WindowText(impl_->controls[row].window);
    return HasAccessKey(kind) ? WithoutAccessKeyMarks(text) : text;
}

void Dialog::SetText(ControlId control, const std::string& text) {
    const Quiet quietly(impl_->quiet);
    const auto row = RowOf(impl_->table, control);
    const Kind kind = impl_->table.controls[row].kind;
    if (kind == Kind::DropDownList) ThrowInvalidArgument();
    SetWindowTextA(impl_->controls[row].window,
                   (HasAccessKey(kind) ? WithAccessKeyMarks(text) : text).c_str());
}

void Dialog::LimitText(ControlId control, std::size_t bytes) {
    SendMessageA(impl_->Window(control, IsText), EM_LIMITTEXT, bytes, 0);
}

int Dialog::Value(ControlId control) const {
    return impl_->Value(RowOf(impl_->table, control));
}

void Dialog::SetValue(ControlId control, int value) {
    impl_->SetValue(RowOf(impl_->table, control), value);
}

void Dialog::SetRange(ControlId control, int lowest, int highest) {
    const HWND window = impl_->Window(control, IsRanged);
    const auto row = RowOf(impl_->table, control);
    if (impl_->table.controls[row].kind == Kind::ProgressBar) {
        Send(window, PBM_SETRANGE32, lowest, highest);
        return;
    }
    Send(window, TBM_SETRANGEMIN, FALSE, lowest);
    Send(window, TBM_SETRANGEMAX, TRUE, highest);
    impl_->controls[row].lastValue = impl_->Value(row);
}

void Dialog::ClearEntries(ControlId control) {
    Send(impl_->Window(control, Kind::DropDownList), CB_RESETCONTENT);
}

void Dialog::AddEntry(ControlId control, const std::string& text) {
    Send(impl_->Window(control, Kind::DropDownList), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

int Dialog::EntryCount(ControlId control) const {
    return Send(impl_->Window(control, Kind::DropDownList), CB_GETCOUNT);
}

std::string Dialog::Entry(ControlId control, int position) const {
    const HWND list = impl_->Window(control, Kind::DropDownList);
    CheckPosition(position, EntryCount(control));
    std::string text(static_cast<std::size_t>(Send(list, CB_GETLBTEXTLEN, position)) + 1, '\0');
    const int length = Send(list, CB_GETLBTEXT, position, reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(std::max(length, 0)));
    return text;
}

void Dialog::AddColumn(ControlId control, const std::string& caption, int width) {
    const HWND list = impl_->Window(control, Kind::ListView);
    RECT units{0, 0, width, 0};
    MapDialogRect(impl_->window, &units);
    std::string text = caption;
    const int count = Send(reinterpret_cast<HWND>(SendMessageA(list, LVM_GETHEADER, 0, 0)), HDM_GETITEMCOUNT);
    LVCOLUMNA column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    column.pszText = text.data();
    column.cx = units.right;
    column.iSubItem = count;
    Send(list, LVM_INSERTCOLUMNA, count, reinterpret_cast<LPARAM>(&column));
}

void Dialog::ClearRows(ControlId control) {
    const Quiet quietly(impl_->quiet);
    Send(impl_->Window(control, Kind::ListView), LVM_DELETEALLITEMS);
}

void Dialog::AddRow(ControlId control, const std::vector<std::string>& cells) {
    const Quiet quietly(impl_->quiet);
    const HWND list = impl_->Window(control, Kind::ListView);
    const int row = RowCount(control);
    SetCellText(list, LVM_INSERTITEMA, row, 0, cells.empty() ? std::string() : cells.front());
    for (std::size_t column = 1; column < cells.size(); ++column)
        SetCellText(list, LVM_SETITEMTEXTA, row, static_cast<int>(column), cells[column]);
}

void Dialog::RemoveRow(ControlId control, int row) {
    const Quiet quietly(impl_->quiet);
    CheckPosition(row, RowCount(control));
    Send(impl_->Window(control, Kind::ListView), LVM_DELETEITEM, row);
}

int Dialog::RowCount(ControlId control) const {
    return Send(impl_->Window(control, Kind::ListView), LVM_GETITEMCOUNT);
}

std::string Dialog::Cell(ControlId control, int row, int column) const {
    CheckPosition(row, RowCount(control));
    return CellText(impl_->Window(control, Kind::ListView), row, column);
}

bool Dialog::IsRowSelected(ControlId control, int row) const {
    CheckPosition(row, RowCount(control));
    return Send(impl_->Window(control, Kind::ListView), LVM_GETITEMSTATE, row, LVIS_SELECTED) != 0;
}

void Dialog::Enable(ControlId control, bool enabled) {
    EnableWindow(impl_->controls[RowOf(impl_->table, control)].window, enabled);
}

bool Dialog::IsEnabled(ControlId control) const {
    return IsWindowEnabled(impl_->controls[RowOf(impl_->table, control)].window) != FALSE;
}

void Dialog::ShowControl(ControlId control, bool shown) {
    ShowWindow(impl_->controls[RowOf(impl_->table, control)].window, shown ? SW_SHOWNA : SW_HIDE);
}

void Dialog::Focus(ControlId control) {
    impl_->FocusOn(impl_->Window(control, TakesInput));
}

}  // namespace os
