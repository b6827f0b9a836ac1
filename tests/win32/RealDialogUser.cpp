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
    SendMessageA(window, EM_SETSEL, 0, -1);
    SendMessageA(window, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
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
        default:
            throw std::logic_error("nothing to choose from in " + std::string(control.name));
    }
    HandleMessages();
}

void DialogUser::SelectRows(ControlId control, const std::vector<int>& rows) {
    const HWND window = Reach(dialog_, control);
    LVITEMA item{};
    item.stateMask = LVIS_SELECTED;
    SendMessageA(window, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
    item.state = LVIS_SELECTED;
    for (const int row : rows)
        SendMessageA(window, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    HandleMessages();
}

void DialogUser::PressEnter(ControlId control) {
    PressKey(Reach(dialog_, control), VK_RETURN);
}

void DialogUser::PressEscape() {
    if (!dialog_.IsShown()) throw std::logic_error("Esc in a dialog that is not shown");
    PressKey(GetFocus(), VK_ESCAPE);
}

bool DialogUser::Sees(ControlId control) const {
    return IsWindowVisible(WindowOf(dialog_, control)) != FALSE;
}

bool DialogUser::HasFocus(ControlId control) const {
    return dialog_.IsShown() && GetFocus() == WindowOf(dialog_, control);
}

}  // namespace os::fake
