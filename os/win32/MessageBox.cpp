#include "os/MessageBox.h"

#include <windows.h>

#include "os/win32/ModalLoop.h"

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

}  // namespace

BoxResult ShowMessageBox(const std::string& text, const std::string& title, BoxIcon icon,
                         BoxButtons buttons) {
    // The active window of this thread becomes the owner, so that the dialog which asks cannot be used behind
    // its own question. From the tray there is none, and without the foreground flag the box would open
    // behind other programs' windows.
    const HWND owner = GetActiveWindow();
    const UINT flags = IconFlag(icon) | ButtonsFlag(buttons) | MB_SETFOREGROUND;
    EnterModalLoop();
    switch (MessageBoxA(owner, text.c_str(), title.c_str(), flags)) {
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
