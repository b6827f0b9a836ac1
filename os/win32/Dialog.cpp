// The calls of a dialog: each is a message to a control's window.
#include "os/desktop/Dialog.h"

#include <string>

#include "os/win32/DialogImpl.h"
#include "os/win32/DialogMessages.h"
#include "os/win32/DialogTemplate.h"

namespace os {
namespace {

using Kind = ControlKind;

int Send(HWND control, UINT message, int wParam = 0, LPARAM lParam = 0) {
    return static_cast<int>(SendMessageW(control, message, static_cast<WPARAM>(wParam), lParam));
}

std::wstring WindowText(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
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

std::wstring TextOfCell(HWND list, int row, int column) {
    std::wstring text(256, L'\0');
    for (;;) {
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = text.data();
        item.cchTextMax = static_cast<int>(text.size());
        const auto length =
            static_cast<std::size_t>(Send(list, LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item)));
        if (length + 1 < text.size()) return text.substr(0, length);
        text.resize(text.size() * 2);
    }
}

void SetCellText(HWND list, UINT message, int row, int column, std::wstring text) {
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.iSubItem = column;
    item.pszText = text.data();
    Send(list, message, message == LVM_SETITEMTEXTW ? row : 0, reinterpret_cast<LPARAM>(&item));
}

void SelectRow(HWND list, int row, UINT state) {
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = state;
    Send(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
}

}  // namespace

std::string Dialog::Impl::TextOf(HWND control) const {
    return FromWide(WindowText(control));
}

int Dialog::Impl::Value(std::size_t row) const {
    const HWND control = controls[row].window;
    switch (table.controls[row].kind) {
        case Kind::CheckBox:
        case Kind::OptionButton:
            return Send(control, BM_GETCHECK) == BST_CHECKED;
        case Kind::DropDownList:
            return Send(control, CB_GETCURSEL);
        case Kind::ListView:
        case Kind::VirtualList:
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
        case Kind::VirtualList:
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

void Dialog::Show(Opening opening) {
    const HWND window = impl_->window;
    if (!IsShown()) {
        impl_->Place(opening);
        impl_->Arrange();
        ShowWindow(window, !opening.takesFocus         ? SW_SHOWNOACTIVATE
                           : opening.place.isMaximized ? SW_SHOWMAXIMIZED
                                                       : SW_SHOW);
        if (opening.takesFocus) impl_->FocusFirst();
    }
    if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
    if (opening.takesFocus) SetForegroundWindow(UsableWindow(window));
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
    impl_->Window(control, [](Kind kind) { return kind == Kind::TextBox || IsList(kind); });
    impl_->controls[RowOf(impl_->table, control)].onEnter = std::move(handler);
}

void Dialog::OnFull(ControlId control, Handler handler) {
    impl_->Window(control, IsText);
    impl_->controls[RowOf(impl_->table, control)].onFull = std::move(handler);
}

void Dialog::OnDelete(ControlId control, Handler handler) {
    impl_->Window(control, IsList);
    impl_->controls[RowOf(impl_->table, control)].onDelete = std::move(handler);
}

std::string Dialog::Text(ControlId control) const {
    const auto row = RowOf(impl_->table, control);
    const Kind kind = impl_->table.controls[row].kind;
    if (kind == Kind::DropDownList) {
        const int chosen = impl_->Value(row);
        return chosen < 0 ? std::string() : Entry(control, chosen);
    }
    if (kind == Kind::IconPicture) return impl_->controls[row].picture;
    const auto text = impl_->TextOf(impl_->controls[row].window);
    return HasAccessKey(kind) ? WithoutAccessKeyMarks(text) : text;
}

void Dialog::SetText(ControlId control, const std::string& text) {
    const Quiet quietly(impl_->quiet);
    const auto row = RowOf(impl_->table, control);
    const Kind kind = impl_->table.controls[row].kind;
    if (kind == Kind::DropDownList) ThrowInvalidArgument();
    if (kind == Kind::IconPicture) return impl_->ShowPicture(row, text);
    const auto shown = impl_->Wide(HasAccessKey(kind) ? WithAccessKeyMarks(text) : text);
    SetWindowTextW(impl_->controls[row].window, shown.c_str());
}

void Dialog::MarkText(ControlId control, std::size_t begin, std::size_t length) {
    const HWND window = impl_->Window(control, [](Kind kind) { return IsText(kind) || IsReadOnly(kind); });
    // The control counts characters.
    const auto text = impl_->TextOf(window);
    const auto characters = [&](std::size_t bytes) {
        return static_cast<int>(impl_->Wide(std::string_view(text).substr(0, bytes)).size());
    };
    Send(window, EM_SETSEL, characters(begin), characters(begin + length));
    Send(window, EM_SCROLLCARET);
}

bool Dialog::LosesLetters(ControlId control) const {
    bool isLost = false;
    BytesOf(impl_->codePage, WindowText(impl_->Window(control, IsText)), false, &isLost);
    return isLost;
}

void Dialog::LimitText(ControlId control, std::size_t bytes) {
    SendMessageW(impl_->Window(control, IsText), EM_LIMITTEXT, bytes, 0);
    impl_->controls[RowOf(impl_->table, control)].limit = bytes;
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
    const auto wide = impl_->Wide(text);
    Send(impl_->Window(control, Kind::DropDownList), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(wide.c_str()));
}

int Dialog::EntryCount(ControlId control) const {
    return Send(impl_->Window(control, Kind::DropDownList), CB_GETCOUNT);
}

std::string Dialog::Entry(ControlId control, int position) const {
    const HWND list = impl_->Window(control, Kind::DropDownList);
    CheckPosition(position, EntryCount(control));
    std::wstring text(static_cast<std::size_t>(Send(list, CB_GETLBTEXTLEN, position)) + 1, L'\0');
    const int length = Send(list, CB_GETLBTEXT, position, reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(std::max(length, 0)));
    return impl_->FromWide(text);
}

void Dialog::AddColumn(ControlId control, const std::string& caption, int width) {
    const HWND list = impl_->Window(control, IsList);
    RECT units{0, 0, width, 0};
    MapDialogRect(impl_->window, &units);
    auto text = impl_->Wide(caption);
    const int count = Send(reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0)), HDM_GETITEMCOUNT);
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    column.pszText = text.data();
    column.cx = units.right;
    column.iSubItem = count;
    Send(list, LVM_INSERTCOLUMNW, count, reinterpret_cast<LPARAM>(&column));
    impl_->controls[RowOf(impl_->table, control)].lastColumn = width;
}

void Dialog::ClearRows(ControlId control) {
    const Quiet quietly(impl_->quiet);
    Send(impl_->Window(control, Kind::ListView), LVM_DELETEALLITEMS);
}

void Dialog::AddRow(ControlId control, const std::vector<std::string>& cells) {
    const Quiet quietly(impl_->quiet);
    const HWND list = impl_->Window(control, Kind::ListView);
    const int row = RowCount(control);
    SetCellText(list, LVM_INSERTITEMW, row, 0, cells.empty() ? std::wstring() : impl_->Wide(cells.front()));
    for (std::size_t column = 1; column < cells.size(); ++column)
        SetCellText(list, LVM_SETITEMTEXTW, row, static_cast<int>(column), impl_->Wide(cells[column]));
}

void Dialog::RemoveRow(ControlId control, int row) {
    const Quiet quietly(impl_->quiet);
    CheckPosition(row, RowCount(control));
    const bool isSelected = Value(control) == row;
    Send(impl_->Window(control, Kind::ListView), LVM_DELETEITEM, row);
    if (isSelected) SetValue(control, std::min(row, RowCount(control) - 1));
}

int Dialog::RowCount(ControlId control) const {
    return Send(impl_->Window(control, IsList), LVM_GETITEMCOUNT);
}

std::string Dialog::Cell(ControlId control, int row, int column) const {
    CheckPosition(row, RowCount(control));
    const auto position = RowOf(impl_->table, control);
    if (impl_->table.controls[position].kind == Kind::VirtualList)
        return impl_->CellOf(position, row, column);
    return impl_->FromWide(TextOfCell(impl_->controls[position].window, row, column));
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
