// The windows of a dialog: how they are made, and what they report.
#include <string>

#include "base/Trap.h"
#include "os/desktop/MessageBox.h"
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
            dialog.WhenNotify(window, *reinterpret_cast<NMHDR*>(lParam));
            return TRUE;
        case WM_HSCROLL:
            dialog.WhenScrolled(reinterpret_cast<HWND>(lParam));
            return TRUE;
        case WM_VSCROLL:
            dialog.WhenBarMoved(LOWORD(wParam));
            return TRUE;
        case WM_MOUSEWHEEL:
            dialog.WhenBarMoved(GET_WHEEL_DELTA_WPARAM(wParam) > 0 ? SB_LINEUP : SB_LINEDOWN);
            return TRUE;
        case WM_CLOSE:
            if (window == dialog.window) dialog.PressEscape();
            return TRUE;
        case kRaiseMessage:
            dialog.controls.at(wParam).told = true;
            dialog.Raise(wParam, lParam != 0 ? &Impl::ControlState::onFull : &Impl::ControlState::on);
            return TRUE;
        default:
            return dialog.WhenLooksChange(window, message, lParam);
    }
}

INT_PTR CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        return FALSE;
    }
    auto* const dialog = reinterpret_cast<Impl*>(GetWindowLongPtrW(window, DWLP_USER));
    if (dialog == nullptr) return message == kDestroyMessage ? DestroyWindow(window) : FALSE;
    return Trap("Dialog:WindowProcedure",
                [&] { return HandleMessage(*dialog, window, message, wParam, lParam); });
}

HWND MakeWindow(const DialogTable& table, int page, HWND parent, Impl* dialog) {
    const auto bytes = DialogTemplate(table, page);
    const HWND window =
        CreateDialogIndirectParamW(GetModuleHandleA(nullptr), reinterpret_cast<LPCDLGTEMPLATEW>(bytes.data()),
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

// For the visible window that another one owns.
struct Search {
    HWND owner;
    HWND found;
};

BOOL CALLBACK FindOwned(HWND other, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    if (GetWindow(other, GW_OWNER) != search.owner || !IsWindowVisible(other)) return TRUE;
    search.found = other;
    return FALSE;
}

}  // namespace

void SetDialogOwner(WindowHandle owner) {
    dialogOwner = reinterpret_cast<HWND>(owner);
}

HWND UsableWindow(HWND window) {
    if (IsWindowEnabled(window)) return window;
    Search search{window, window};
    EnumThreadWindows(GetCurrentThreadId(), FindOwned, reinterpret_cast<LPARAM>(&search));
    return search.found == window ? window : UsableWindow(search.found);
}

HWND OwnerOfBoxes() {
    const auto cause = reinterpret_cast<HWND>(BoxesBefore::Current());
    return IsWindowVisible(cause) ? cause : dialogOwner;
}

bool TakeDialogMessage(MSG& message) {
    const HWND root = GetAncestor(message.hwnd, GA_ROOT);
    Dialog* const dialog = DialogAccess::OfWindow(root);
    if (dialog == nullptr) return false;
    if (message.message == WM_KEYDOWN && DialogAccess::Of(*dialog).WhenKey(message)) return true;
    const HWND focusBefore = GetFocus();
    if (IsDialogMessageW(root, &message) == FALSE) return false;
    // A handler may have destroyed the dialog.
    if (GetFocus() != focusBefore && DialogAccess::OfWindow(root) == dialog)
        DialogAccess::Of(*dialog).BringIntoView(GetFocus());
    return true;
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
    SendMessageW(window, WM_SETICON, ICON_BIG,
                 reinterpret_cast<LPARAM>(ApplicationIcon(SM_CXICON, SM_CYICON)));
    SendMessageW(window, WM_SETICON, ICON_SMALL,
                 reinterpret_cast<LPARAM>(ApplicationIcon(SM_CXSMICON, SM_CYSMICON)));
    const auto tabs = FirstOfKind(table, Kind::TabStrip);
    if (tabs < controls.size())
        MakePages(table.controls[tabs], GetDlgItem(window, ControlWindowId(table, tabs)));
    for (std::size_t row = 0; row < controls.size(); ++row) MakeControl(row);
    GiveFixedFonts();
    ShowCurrentPage();
}

// The windows go later, from the loop: the message of one of them may be what destroys the dialog.
Dialog::Impl::~Impl() {
    std::erase(Dialogs(), this);
    for (const HWND page : pages) SetWindowLongPtrW(page, DWLP_USER, 0);
    SetWindowLongPtrW(window, DWLP_USER, 0);
    ShowWindow(window, SW_HIDE);
    PostMessageW(window, kDestroyMessage, 0, 0);
    if (fixedFont != nullptr) DeleteObject(fixedFont);
}

// A page is a child dialog over the inside of the tab strip; that gives it the strip's background and keeps
// its controls together in the tab order.
void Dialog::Impl::MakePages(const Control& tabStrip, HWND tabs) {
    ForEachPage(tabStrip, [&](std::string_view caption) {
        auto text = Wide(caption);
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = text.data();
        SendMessageW(tabs, TCM_INSERTITEMW, pages.size(), reinterpret_cast<LPARAM>(&item));
        pages.push_back(MakeWindow(table, static_cast<int>(pages.size()), window, this));
    });
    // Tab goes from window to window in the order in which they lie on each other, the pages first. The
    // strip, and what stands before it, comes before them by lying at the bottom: the order is a circle.
    for (std::size_t row = 0; row < controls.size(); ++row) {
        const HWND control = GetDlgItem(window, ControlWindowId(table, row));
        if (table.controls[row].page == kNoPage)
            SetWindowPos(control, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        if (control == tabs) break;
    }
    for (const HWND page : pages) EnableThemeDialogTexture(page, ETDT_ENABLETAB);
    PlacePages();
}

void Dialog::Impl::MakeControl(std::size_t row) {
    const Control& control = table.controls[row];
    const HWND parent = control.page == kNoPage ? window : pages.at(static_cast<std::size_t>(control.page));
    const HWND made = GetDlgItem(parent, ControlWindowId(table, row));
    controls[row].window = made;
    if (IsText(control.kind)) {
        SendMessageW(made, EM_LIMITTEXT, kDefaultTextLimit, 0);
        SetWindowTextW(made, Wide(control.initial).c_str());
    } else if (IsMarked(control.kind) || IsRanged(control.kind)) {
        SetValue(row, InitialValue(control));
    } else if (control.kind == Kind::IconPicture) {
        ShowPicture(row, control.caption);
    } else if (IsList(control.kind)) {
        const DWORD styles = LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER;
        SendMessageW(made, LVM_SETEXTENDEDLISTVIEWSTYLE, styles, styles);
    }
}

void Dialog::Impl::ShowPicture(std::size_t row, std::string_view name) {
    controls[row].picture = name;
    SendMessageW(controls[row].window, STM_SETICON, reinterpret_cast<WPARAM>(Picture(name)), 0);
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
        if (TakesFocusFirst(table.controls[row].kind) && IsWindowVisible(control) && IsWindowEnabled(control))
            return FocusOn(control);
    }
}

// By way of the dialog, which marks the default button and selects the text.
void Dialog::Impl::FocusOn(HWND control) {
    SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    BringIntoView(control);
}

std::size_t Dialog::Impl::RowOfWindow(HWND control) const {
    std::size_t row = 0;
    while (row < controls.size() && controls[row].window != control) ++row;
    return row;
}

void Dialog::Impl::Raise(std::size_t row, Handler ControlState::*event) {
    const Handler handler = controls[row].*event;
    const BoxesBefore cause(self.Handle());
    if (handler) Trap((std::string("Dialog:") + table.controls[row].name).c_str(), handler);
}

// For what comes in several notifications, and for what must not be answered inside one: raised from the
// loop, once.
void Dialog::Impl::PostRaise(std::size_t row, bool full) {
    if (!full && !std::exchange(controls[row].told, false)) return;
    PostMessageW(window, kRaiseMessage, row, full);
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
    if (IsText(kind) && notification == EN_CHANGE && CutToLimit(row)) PostRaise(row, true);
    if ((IsMarked(kind) && notification == BN_CLICKED) || (IsText(kind) && notification == EN_CHANGE) ||
        (kind == Kind::DropDownList && notification == CBN_SELCHANGE))
        Raise(row, &ControlState::on);
}

void Dialog::Impl::WhenNotify(HWND parent, NMHDR& header) {
    const auto row = RowOfWindow(header.hwndFrom);
    if (row == controls.size()) return;
    if (const auto answer = WhenListAsks(row, header)) {
        SetWindowLongPtrW(parent, DWLP_MSGRESULT, *answer);
        return;
    }
    if (quiet > 0) return;
    if (header.code == static_cast<UINT>(NM_DBLCLK)) return Raise(row, &ControlState::onEnter);
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

// The control counts characters, and a character may have two bytes. What came in last, before the caret,
// goes until the bytes fit. Whether there was too much.
bool Dialog::Impl::CutToLimit(std::size_t row) {
    const HWND box = controls[row].window;
    const Quiet quietly(quiet);
    bool any = false;
    for (;;) {
        const auto bytes = TextOf(box).size();
        DWORD caret = 0;
        SendMessageW(box, EM_GETSEL, 0, reinterpret_cast<LPARAM>(&caret));
        if (bytes <= controls[row].limit || caret == 0) return any;
        const auto excess = static_cast<DWORD>(bytes - controls[row].limit);
        SendMessageW(box, EM_SETSEL, caret - std::min((excess + 1) / 2, caret), static_cast<LPARAM>(caret));
        SendMessageW(box, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
        any = true;
    }
}

// Ctrl+C where nothing else is to be copied.
bool Dialog::Impl::CopyReadOnlyText(HWND focused) {
    const auto row = FirstOfKind(table, Kind::ReadOnlyText);
    const auto focusedRow = RowOfWindow(focused);
    if (row == controls.size() || !IsWindowVisible(controls[row].window)) return false;
    HWND text = controls[row].window;
    if (focusedRow < controls.size()) {
        const Kind kind = table.controls[focusedRow].kind;
        if (IsText(kind)) return false;
        if (IsReadOnly(kind)) {
            text = focused;
            DWORD begin = 0, end = 0;
            SendMessageW(text, EM_GETSEL, reinterpret_cast<WPARAM>(&begin), reinterpret_cast<LPARAM>(&end));
            if (begin != end) return false;
        }
    }
    SendMessageW(text, EM_SETSEL, 0, -1);
    SendMessageW(text, WM_COPY, 0, 0);
    SendMessageW(text, EM_SETSEL, 0, 0);
    return true;
}

// The keys that the system's own handling lacks.
bool Dialog::Impl::WhenKey(const MSG& message) {
    const bool control = GetKeyState(VK_CONTROL) < 0;
    if (control && message.wParam == VK_TAB) return TurnPage(GetKeyState(VK_SHIFT) < 0 ? -1 : 1);
    if (control && message.wParam == 'C' && CopyReadOnlyText(message.hwnd)) return true;
    const auto row = RowOfWindow(message.hwnd);
    if (row == controls.size()) return false;
    const Kind kind = table.controls[row].kind;
    if (control && message.wParam == 'A' && (IsText(kind) || IsReadOnly(kind))) {
        SendMessageW(message.hwnd, EM_SETSEL, 0, -1);
        return true;
    }
    const auto event = message.wParam == VK_RETURN   ? &ControlState::onEnter
                       : message.wParam == VK_DELETE ? &ControlState::onDelete
                                                     : nullptr;
    if (event == nullptr || !(controls[row].*event)) return false;
    Raise(row, event);
    return true;
}

}  // namespace os
