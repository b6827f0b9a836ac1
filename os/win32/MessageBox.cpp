#include "os/desktop/MessageBox.h"

#include <windows.h>

#include <vector>

#include "os/win32/DialogMessages.h"

namespace os {
namespace {

UINT IconFlag(BoxIcon icon) {
    switch (icon) {
        case BoxIcon::Information:
            return MB_ICONINFORMATION;
        case BoxIcon::Question:
            return MB_ICONQUESTION;
        case BoxIcon::Warning:
            return MB_ICONWARNING;
        case BoxIcon::Error:
            return MB_ICONERROR;
        case BoxIcon::None:
            break;
    }
    return 0;
}

UINT ButtonsFlag(BoxButtons buttons) {
    switch (buttons) {
        case BoxButtons::OkCancel:
            return MB_OKCANCEL;
        case BoxButtons::YesNo:
            return MB_YESNO;
        case BoxButtons::YesNoCancel:
            return MB_YESNOCANCEL;
        case BoxButtons::Ok:
            break;
    }
    return MB_OK;
}

// What a box answers that was closed, or could not be shown at all: the answer that does least.
BoxResult ClosedAnswer(BoxButtons buttons) {
    if (buttons == BoxButtons::Ok) return BoxResult::Ok;
    return buttons == BoxButtons::YesNo ? BoxResult::No : BoxResult::Cancel;
}

// A box on the screen.
struct OpenBox {
    const std::string& text;
    const std::string& title;
    HWND window;  // nullptr until it has been made
};

std::vector<OpenBox>& OpenBoxes() {
    static std::vector<OpenBox> boxes;
    return boxes;
}

// The first window of this thread to become active, since the hook was set, is the box.
LRESULT CALLBACK KeepBox(int code, WPARAM wParam, LPARAM lParam) {
    auto& window = OpenBoxes().back().window;
    if (code == HCBT_ACTIVATE && window == nullptr) window = reinterpret_cast<HWND>(wParam);
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

int RunBox(const std::string& text, const std::string& title, UINT flags) {
    const HWND owner = OwnerOfBoxes();
    const ForeignDialogLoop loop;
    OpenBoxes().push_back({text, title, nullptr});
    const HHOOK hook = SetWindowsHookExA(WH_CBT, KeepBox, nullptr, GetCurrentThreadId());
    const int answer = MessageBoxA(owner, text.c_str(), title.c_str(), flags);
    UnhookWindowsHookEx(hook);
    OpenBoxes().pop_back();
    return answer;
}

}  // namespace

BoxResult ShowMessageBox(const std::string& text, const std::string& title, BoxIcon icon,
                         BoxButtons buttons) {
    if (buttons == BoxButtons::Ok)
        for (const auto& box : OpenBoxes())
            if (box.text == text && box.title == title) {
                SetForegroundWindow(box.window);
                return BoxResult::Ok;
            }
    // Without the foreground flag a box from the tray would open behind other programs' windows.
    switch (RunBox(text, title, IconFlag(icon) | ButtonsFlag(buttons) | MB_SETFOREGROUND)) {
        case IDOK:
            return BoxResult::Ok;
        case IDYES:
            return BoxResult::Yes;
        case IDNO:
            return BoxResult::No;
        default:  // IDCANCEL too, which Wine also gives for a box that has OK alone
            return ClosedAnswer(buttons);
    }
}

}  // namespace os
