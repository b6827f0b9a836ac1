// The user's hand of os/fake/FakeDialog.h on real windows: the same tests run on both.
#include <windows.h>
// after windows.h
#include <commctrl.h>

#include <stdexcept>

#include "os/fake/FakeDialog.h"
#include "os/win32/DialogImpl.h"
#include "tests/win32/Messages.h"

namespace os::fake {
namespace {

using Impl = DialogAccess::Impl;
using Kind = ControlKind;

HWND WindowOf(const Dialog& dialog, ControlId control) {
    return DialogAccess::Of(dialog).Window(control, [](Kind) { return true; });
}

// The control's window, if a user can reach it now.
HWND Reach(const Dialog& dialog, ControlId control) {
    const HWND window = WindowOf(dialog, control);
    if (!IsWindowVisible(window) || !IsWindowEnabled(window))
        throw std::logic_error(std::string(control.name) + " cannot be reached");
    SetFocus(window);
    return window;
}

void Tell(HWND control, UINT message, WORD notification) {
    const auto id = static_cast<WORD>(GetDlgCtrlID(control));
    SendMessageA(GetParent(control), message, MAKEWPARAM(id, notification),
                 reinterpret_cast<LPARAM>(control));
}

void PressKey(HWND window, WPARAM key) {
    PostMessageA(window, WM_KEYDOWN, key, 1);
    PostMessageA(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    HandleMessages();
}

struct Search {
    std::string caption;
    std::vector<HWND> found;
};

BOOL CALLBACK KeepShown(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    char caption[128] = "";
    GetWindowTextA(window, caption, sizeof(caption));
    if (IsWindowVisible(window) && search.caption == caption) search.found.push_back(window);
    return TRUE;
}

std::vector<HWND> ShownWindows(const std::string& caption) {
    HandleMessages();
    Search search{caption, {}};
    EnumThreadWindows(GetCurrentThreadId(), KeepShown, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

}  // namespace

Dialog& ShownDialog(const std::string& caption) {
    for (const HWND window : ShownWindows(caption))
        if (Dialog* const dialog = DialogAccess::OfWindow(window)) return *dialog;
    throw std::logic_error("no dialog is shown with the caption " + caption);
}

int ShownDialogCount(const std::string& caption) {
    return static_cast<int>(ShownWindows(caption).size());
}

void DialogUser::Press(ControlId control) {
    PostMessageA(Reach(dialog_, control), BM_CLICK, 0, 0);
    HandleMessages();
}

void DialogUser::Type(ControlId control, const std::string& text) {
    const HWND window = Reach(dialog_, control);
    const auto wide = DialogAccess::Of(dialog_).Wide(text);
    SendMessageW(window, EM_SETSEL, 0, -1);
    SendMessageW(window, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(wide.c_str()));
    HandleMessages();
}

void DialogUser::TypeBeyondCodePage(ControlId control) {
    const HWND window = Reach(dialog_, control);
    SendMessageW(window, EM_SETSEL, 0, -1);
    SendMessageW(window, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L"C:\\\x0141ukasz \x041F"));
    HandleMessages();
}

void DialogUser::Choose(ControlId control, int position) {
    const HWND window = Reach(dialog_, control);
    const auto number = static_cast<WPARAM>(position);
    switch (dialog_.Table().controls[RowOf(dialog_.Table(), control)].kind) {
        case Kind::DropDownList:
            SendMessageA(window, CB_SETCURSEL, number, 0);
            Tell(window, WM_COMMAND, CBN_SELCHANGE);
            break;
        case Kind::TabStrip:
            SendMessageA(window, TCM_SETCURFOCUS, number, 0);
            break;
        case Kind::Slider:
            SendMessageA(window, TBM_SETPOS, TRUE, position);
            SendMessageA(GetParent(window), WM_HSCROLL, TB_ENDTRACK, reinterpret_cast<LPARAM>(window));
            break;
        case Kind::ListView:
        case Kind::VirtualList: {
            LVITEMA item{};
            item.stateMask = item.state = LVIS_SELECTED;
            SendMessageA(window, LVM_SETITEMSTATE, number, reinterpret_cast<LPARAM>(&item));
            break;
        }
        default:
            throw std::logic_error("nothing to choose from in " + std::string(control.name));
    }
    HandleMessages();
}

void DialogUser::PressDelete(ControlId control) {
    PressKey(Reach(dialog_, control), VK_DELETE);
}

void DialogUser::ScrollTo(ControlId list, int row) {
    const HWND window = Reach(dialog_, list);
    RECT first{LVIR_BOUNDS, 0, 0, 0};
    SendMessageA(window, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&first));
    SendMessageA(window, LVM_SCROLL, 0, (row - FirstSeen(list)) * (first.bottom - first.top));
    HandleMessages();
}

int DialogUser::FirstSeen(ControlId list) const {
    return static_cast<int>(SendMessageA(WindowOf(dialog_, list), LVM_GETTOPINDEX, 0, 0));
}

int DialogUser::LastSeen(ControlId list) const {
    const auto page = static_cast<int>(SendMessageA(WindowOf(dialog_, list), LVM_GETCOUNTPERPAGE, 0, 0));
    return std::min(FirstSeen(list) + page, dialog_.RowCount(list)) - 1;
}

void DialogUser::Resize(int width, int height) {
    const HWND window = reinterpret_cast<HWND>(dialog_.Handle());
    RECT frame{0, 0, width, height};
    MapDialogRect(window, &frame);
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongPtrA(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrA(window, GWL_EXSTYLE)));
    SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 SWP_NOMOVE | SWP_NOZORDER);
    HandleMessages();
}

DialogRect DialogUser::PlaceOf(ControlId control) const {
    const HWND window = WindowOf(dialog_, control);
    RECT place;
    GetWindowRect(window, &place);
    MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&place), 2);
    RECT thousand{0, 0, 1000, 1000};
    MapDialogRect(reinterpret_cast<HWND>(dialog_.Handle()), &thousand);
    const auto units = [](LONG pixels, LONG whole) {
        return static_cast<short>(MulDiv(static_cast<int>(pixels), 1000, static_cast<int>(whole)));
    };
    return {units(place.left, thousand.right), units(place.top, thousand.bottom),
            units(place.right - place.left, thousand.right),
            units(place.bottom - place.top, thousand.bottom)};
}

std::string DialogUser::Marked(ControlId control) const {
    const HWND window = WindowOf(dialog_, control);
    DWORD begin = 0;
    DWORD end = 0;
    SendMessageW(window, EM_GETSEL, reinterpret_cast<WPARAM>(&begin), reinterpret_cast<LPARAM>(&end));
    const auto& dialog = DialogAccess::Of(dialog_);
    return dialog.FromWide(dialog.Wide(dialog_.Text(control)).substr(begin, end - begin));
}

void DialogUser::PressEnter(ControlId control) {
    PressKey(Reach(dialog_, control), VK_RETURN);
}

void DialogUser::PressEscape() {
    if (!dialog_.IsShown()) throw std::logic_error("Esc in a dialog that is not shown");
    SetActiveWindow(reinterpret_cast<HWND>(dialog_.Handle()));
    PressKey(GetFocus(), VK_ESCAPE);
}

bool DialogUser::Sees(ControlId control) const {
    return IsWindowVisible(WindowOf(dialog_, control)) != FALSE;
}

bool DialogUser::HasFocus(ControlId control) const {
    return dialog_.IsShown() && GetFocus() == WindowOf(dialog_, control);
}

bool DialogUser::IsActive() const {
    return reinterpret_cast<WindowHandle>(GetActiveWindow()) == dialog_.Handle();
}

}  // namespace os::fake
