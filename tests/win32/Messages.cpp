#include "tests/win32/Messages.h"

#include <windows.h>

#include "os/win32/DialogMessages.h"

// Busy sockets announce themselves by messages without end.
void HandleMessages() {
    constexpr int kMaxMessages = 64;
    MSG message;
    for (int i = 0; i < kMaxMessages && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); ++i) {
        if (os::TakeDialogMessage(message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool HandleMessagesUntil(const std::function<bool()>& answer) {
    constexpr DWORD kPatienceMs = 10'000;
    const DWORD begin = GetTickCount();
    while (!answer()) {
        if (GetTickCount() - begin >= kPatienceMs) return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        HandleMessages();
    }
    return true;
}
