// The windows of a dialog: how they are made, and what they report.
#include <string>

#include "base/Trap.h"
#include "os/win32/DialogImpl.h"
#include "os/win32/DialogMessages.h"
#include "os/win32/DialogTemplate.h"
// after windows.h
#include <uxtheme.h>

namespace os {
namespace {

using Kind = ControlKind;
using Impl = DialogAccess::Impl;

// Posted to a dialog's window: raise the event of a row (wParam; lParam tells whether the text box is full).
constexpr UINT kRaiseMessage = WM_APP;
// Posted to a window whose dialog is gone.
constexpr UINT kDestroyMessage = WM_APP + 1;
// The application's icon in the resources, and the one of the system when there is none.
constexpr WORD kApplicationIcon = 1;

HWND dialogOwner = nullptr;

// The dialogs that exist.
std::vector<Impl*>& Dialogs() {
    static std::vector<Impl*> dialogs;
    return dialogs;
}

HICON ApplicationIcon(int widthMetric, int heightMetric) {
    const auto icon = LoadImageA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(kApplicationIcon), IMAGE_ICON,
                                 GetSystemMetrics(widthMetric), GetSystemMetrics(heightMetric), LR_SHARED);
    return icon != nullptr ? static_cast<HICON>(icon) : LoadIconA(nullptr, IDI_APPLICATION);
}

HICON Picture(std::string_view name) {
    if (name == "error") return LoadIconA(nullptr, IDI_ERROR);
    if (name == "warning") return LoadIconA(nullptr, IDI_WARNING);
    if (name == "information") return LoadIconA(nullptr, IDI_INFORMATION);
    return ApplicationIcon(SM_CXICON, SM_CYICON);
}

INT_PTR HandleMessage(Impl& dialog, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            dialog.WhenCommand(LOWORD(wParam), HIWORD(wParam));
            return TRUE;
        case WM_NOTIFY:
            dialog.WhenNotify(*reinterpret_cast<const NMHDR*>(lParam));
            return TRUE;
        case WM_HSCROLL:
            dialog.WhenScrolled(reinterpret_cast<HWND>(lParam));
            return TRUE;
        case WM_CLOSE:
            if (window == dialog.window) dialog.PressEscape();
            return TRUE;
        case kRaiseMessage:
            dialog.controls.at(wParam).told = true;
            dialog.Raise(wParam, lParam != 0 ? &Impl::ControlState::onFull : &Impl::ControlState::on);
            return TRUE;
        default:
            return FALSE;
    }
}

INT_PTR CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(window, DWLP_USER, lParam);
        return FALSE;
    }
    auto* const dialog = reinterpret_cast<Impl*>(GetWindowLongPtrA(window, DWLP_USER));
    if (dialog == nullptr) return message == kDestroyMessage ? DestroyWindow(window) : FALSE;
    return Trap("Dialog:WindowProcedure",
                [&] { return HandleMessage(*dialog, window, message, wParam, lParam); });
}

HWND MakeWindow(const DialogTable& table, int page, HWND parent, Impl* dialog) {
    const auto bytes = DialogTemplate(table, page);
    const HWND window =
        CreateDialogIndirectParamA(GetModuleHandleA(nullptr), reinterpret_cast<LPCDLGTEMPLATEA>(bytes.data()),
                                   parent, DialogProcedure, reinterpret_cast<LPARAM>(dialog));
    if (window == nullptr)
        throw RuntimeError(static_cast<std::int32_t>(GetLastError()), "The window could not be made");
    return window;
}

void InitialiseControls() {
    const INITCOMMONCONTROLSEX classes{
        sizeof(INITCOMMONCONTROLSEX),
        ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES | ICC_BAR_CLASSES | ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&classes);
}

}  // namespace

void SetDialogOwner(WindowHandle owner) {
    dialogOwner = reinterpret_cast<HWND>(owner);
}

bool TakeDialogMessage(MSG& message) {
    const HWND root = GetAncestor(message.hwnd, GA_ROOT);
    Dialog* const dialog = DialogAccess::OfWindow(root);
    if (dialog == nullptr) return false;
    if (message.message == WM_KEYDOWN && DialogAccess::Of(*dialog).WhenKey(message)) return true;
    return IsDialogMessageA(root, &message) != FALSE;
}

Dialog* DialogAccess::OfWindow(HWND window) {
    const auto& dialogs = Dialogs();
    const auto found = std::find_if(dialogs.begin(), dialogs.end(),
                                    [window](const Impl* dialog) { return dialog->window == window; });
    return found != dialogs.end() ? &(*found)->self : nullptr;
}

Dialog::Impl::Impl(Dialog& dialog, const DialogTable& dialogTable)
    : self(dialog), table(dialogTable), controls(dialogTable.controls.size()) {
    InitialiseControls();
    const Quiet quietly(quiet);
    window = MakeWindow(table, kNoPage, dialogOwner, this);
    Dialogs().push_back(this);
    SendMessageA(window, WM_SETICON, ICON_BIG,
                 reinterpret_cast<LPARAM>(ApplicationIcon(SM_CXICON, SM_CYICON)));
    SendMessageA(window, WM_SETICON, ICON_SMALL,
                 reinterpret_cast<LPARAM>(ApplicationIcon(SM_CXSMICON, SM_CYSMICON)));
    const auto tabs = FirstOfKind(table, Kind::TabStrip);
    if (tabs < controls.size())
        MakePages(table.controls[tabs], GetDlgItem(window, ControlWindowId(table, tabs)));
    for (std::size_t row = 0; row < controls.size(); ++row) MakeControl(row);
    ShowCurrentPage();
}

// The windows go later, from the loop: the message of one of them may be what destroys the dialog.
Dialog::Impl::~Impl() {
    std::erase(Dialogs(), this);
    for (const HWND page : pages) SetWindowLongPtrA(page, DWLP_USER, 0);
    SetWindowLongPtrA(window, DWLP_USER, 0);
    ShowWindow(window, SW_HIDE);
    PostMessageA(window, kDestroyMessage, 0, 0);
}

// A page is a child dialog over the inside of the tab strip; that gives it the strip's background and keeps
// its controls together in the tab order.
void Dialog::Impl::MakePages(const Control& tabStrip, HWND tabs) {
    ForEachPage(tabStrip, [&](std::string_view caption) {
        std::string text(caption);
        TCITEMA item{};
        item.mask = TCIF_TEXT;
        item.pszText = text.data();
        SendMessageA(tabs, TCM_INSERTITEMA, pages.size(), reinterpret_cast<LPARAM>(&item));
        pages.push_back(MakeWindow(table, static_cast<int>(pages.size()), window, this));
    });
    RECT inside;
    GetWindowRect(tabs, &inside);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&inside), 2);
    SendMessageA(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&inside));
    for (const HWND page : pages) {
        EnableThemeDialogTexture(page, ETDT_ENABLETAB);
        SetWindowPos(page, HWND_TOP, inside.left, inside.top, inside.right - inside.left,
                     inside.bottom - inside.top, SWP_NOACTIVATE);
    }
}

void Dialog::Impl::MakeControl(std::size_t row) {
    const Control& control = table.controls[row];
    const HWND parent = control.page == kNoPage ? window : pages.at(static_cast<std::size_t>(control.page));
    const HWND made = GetDlgItem(parent, ControlWindowId(table, row));
    controls[row].window = made;
    if (IsText(control.kind)) {
        SendMessageA(made, EM_LIMITTEXT, kDefaultTextLimit, 0);
        SetWindowTextA(made, control.initial);
    } else if (IsMarked(control.kind) || IsRanged(control.kind)) {
        SetValue(row, InitialValue(control));
    } else if (control.kind == Kind::IconPicture) {
        SendMessageA(made, STM_SETICON, reinterpret_cast<WPARAM>(Picture(control.caption)), 0);
    } else if (control.kind == Kind::ListView) {
        const DWORD styles = LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER;
        SendMessageA(made, LVM_SETEXTENDEDLISTVIEWSTYLE, styles, styles);
    }
}

void Dialog::Impl::ShowCurrentPage() {
    const auto tabs = FirstOfKind(table, Kind::TabStrip);
    if (tabs == controls.size()) return;
    const auto current = static_cast<std::size_t>(Value(tabs));
    for (std::size_t page = 0; page < pages.size(); ++page)
        ShowWindow(pages[page], page == current ? SW_SHOWNA : SW_HIDE);
}

void Dialog::Impl::FocusFirst() {
    for (std::size_t row = 0; row < controls.size(); ++row) {
        const HWND control = controls[row].window;
        if (TakesInput(table.controls[row].kind) && IsWindowVisible(control) && IsWindowEnabled(control))
            return FocusOn(control);
    }
}

// By way of the dialog, which marks the default button and selects the text.
void Dialog::Impl::FocusOn(HWND control) {
    SendMessageA(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

std::size_t Dialog::Impl::RowOfWindow(HWND control) const {
    std::size_t row = 0;
    while (row < controls.size() && controls[row].window != control) ++row;
    return row;
}

void Dialog::Impl::Raise(std::size_t row, Handler ControlState::*event) {
    const Handler handler = controls[row].*event;
    const std::string where = std::string("Dialog:") + table.controls[row].name;
    if (handler) Trap(where.c_str(), handler);
}

// For what comes in several notifications, and for what must not be answered inside one: raised from the
// loop, once.
void Dialog::Impl::PostRaise(std::size_t row, bool full) {
    if (!full && !std::exchange(controls[row].told, false)) return;
    PostMessageA(window, kRaiseMessage, row, full);
}

void Dialog::Impl::PressOrClose(std::size_t row) {
    if (!IsWindowEnabled(controls[row].window)) return;
    const bool closes = table.controls[row].kind != Kind::Button;
    if (closes && !controls[row].on)
        ShowWindow(window, SW_HIDE);
    else
        Raise(row, &ControlState::on);
}

void Dialog::Impl::PressEscape() {
    auto row = FirstOfKind(table, Kind::CancelButton);
    if (row == controls.size()) row = FirstOfKind(table, Kind::DefaultButton);
    if (row < controls.size()) PressOrClose(row);
}

void Dialog::Impl::WhenCommand(int windowId, UINT notification) {
    if (windowId == IDCANCEL) return PressEscape();
    std::size_t row = 0;
    while (row < controls.size() && ControlWindowId(table, row) != windowId) ++row;
    if (row == controls.size() || quiet > 0) return;
    const Kind kind = table.controls[row].kind;
    if (IsButton(kind) && notification == BN_CLICKED) return PressOrClose(row);
    if (IsText(kind) && notification == EN_MAXTEXT) return PostRaise(row, true);
    if ((IsMarked(kind) && notification == BN_CLICKED) || (IsText(kind) && notification == EN_CHANGE) ||
        (kind == Kind::DropDownList && notification == CBN_SELCHANGE))
        Raise(row, &ControlState::on);
}

void Dialog::Impl::WhenNotify(const NMHDR& header) {
    const auto row = RowOfWindow(header.hwndFrom);
    if (row == controls.size() || quiet > 0) return;
    if (header.code == static_cast<UINT>(TCN_SELCHANGE)) {
        ShowCurrentPage();
        return Raise(row, &ControlState::on);
    }
    if (header.code != static_cast<UINT>(LVN_ITEMCHANGED)) return;
    const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
    if (((change.uOldState ^ change.uNewState) & LVIS_SELECTED) != 0) PostRaise(row, false);
}

void Dialog::Impl::WhenScrolled(HWND slider) {
    const auto row = RowOfWindow(slider);
    if (row == controls.size()) return;
    const int value = Value(row);
    if (std::exchange(controls[row].lastValue, value) != value) Raise(row, &ControlState::on);
}

bool Dialog::Impl::TurnPage(int step) {
    const auto tabs = FirstOfKind(table, Kind::TabStrip);
    if (tabs == controls.size()) return false;
    const int count = static_cast<int>(pages.size());
    SetValue(tabs, (Value(tabs) + step + count) % count);
    SetFocus(controls[tabs].window);
    Raise(tabs, &ControlState::on);
    return true;
}

// The keys that the system's own handling lacks.
bool Dialog::Impl::WhenKey(const MSG& message) {
    const bool control = GetKeyState(VK_CONTROL) < 0;
    if (control && message.wParam == VK_TAB) return TurnPage(GetKeyState(VK_SHIFT) < 0 ? -1 : 1);
    const auto row = RowOfWindow(message.hwnd);
    if (row == controls.size()) return false;
    if (control && message.wParam == 'A' && IsText(table.controls[row].kind)) {
        SendMessageA(message.hwnd, EM_SETSEL, 0, -1);
        return true;
    }
    if (message.wParam != VK_RETURN || !controls[row].onEnter) return false;
    Raise(row, &ControlState::onEnter);
    return true;
}

}  // namespace os
