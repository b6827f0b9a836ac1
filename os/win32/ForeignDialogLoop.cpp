// The system's own dialogs run a loop that knows nothing of our dialogs. It asks a message hook first,
// though, and so Tab, Enter and Esc work in them as ever.
#include <windows.h>

#include <utility>

#include "os/win32/DialogMessages.h"
#include "os/win32/ModalLoop.h"

namespace os {
namespace {

HHOOK hook = nullptr;
int loops = 0;
// A message is being offered: the dialog manager asks the hook again on its behalf.
bool isOffering = false;

LRESULT CALLBACK OfferToDialogs(int code, WPARAM wParam, LPARAM lParam) {
    if (code == MSGF_DIALOGBOX && !isOffering) {
        isOffering = true;
        const bool isTaken = TakeDialogMessage(*reinterpret_cast<MSG*>(lParam));
        isOffering = false;
        if (isTaken) return TRUE;
    }
    return CallNextHookEx(hook, code, wParam, lParam);
}

}  // namespace

ForeignDialogLoop::ForeignDialogLoop() : nobody_(0), wasOffering_(std::exchange(isOffering, false)) {
    if (loops++ == 0) hook = SetWindowsHookExW(WH_MSGFILTER, OfferToDialogs, nullptr, GetCurrentThreadId());
    EnterModalLoop();
}

ForeignDialogLoop::~ForeignDialogLoop() {
    isOffering = wasOffering_;
    if (--loops == 0 && hook != nullptr) UnhookWindowsHookEx(std::exchange(hook, nullptr));
}

}  // namespace os
