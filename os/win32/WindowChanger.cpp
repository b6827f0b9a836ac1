#include "os/win32/WindowChanger.h"

#include <map>
#include <new>

#include "os/win32/Handle.h"

namespace os {
namespace {

// An order to the thread: the window, and its alpha or kOpaque.
constexpr UINT kOrder = WM_APP;
constexpr LPARAM kOpaque = -1;

// On windows that we have made layered. It goes with the window and outlives us.
constexpr char kMark[] = "Wrenlow.MadeLayered";

constexpr UINT kAnswerMs = 200;      // how long a window may take to show that it does not hang
constexpr DWORD kTryAgainMs = 1000;  // until one that hangs is asked again

bool Answers(HWND window) {
    DWORD_PTR result = 0;
    return SendMessageTimeoutA(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kAnswerMs, &result) != 0;
}

// The mark comes first and goes last: whatever happens between, no window stays layered without it.
void Unlayer(HWND window, LONG style) {
    SetWindowLongA(window, GWL_EXSTYLE, style & ~static_cast<LONG>(WS_EX_LAYERED));
    RemovePropA(window, kMark);
}

// Whether nothing is left to do; false for a window that hangs.
bool MakeLayered(HWND window, BYTE alpha) {
    const LONG style = GetWindowLongA(window, GWL_EXSTYLE);
    const bool isOurs = GetPropA(window, kMark) != nullptr;
    if ((style & WS_EX_LAYERED) == 0) {
        if (!Answers(window)) return false;
        if (!SetPropA(window, kMark, reinterpret_cast<HANDLE>(1))) return true;
        SetWindowLongA(window, GWL_EXSTYLE, style | WS_EX_LAYERED);
    } else if (!isOurs) {
        return true;
    }
    // A layered window without attributes is not drawn at all. The colour key, 2, is not looked at.
    if (!SetLayeredWindowAttributes(window, 2, alpha, LWA_ALPHA)) Unlayer(window, style);
    return true;
}

bool MakeOrdinary(HWND window) {
    if (GetPropA(window, kMark) == nullptr) return true;
    if (!Answers(window)) return false;
    Unlayer(window, GetWindowLongA(window, GWL_EXSTYLE));
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
    return true;
}

using Orders = std::map<HWND, LPARAM>;

bool CarryOut(const Orders::value_type& order) {
    const auto& [window, alpha] = order;
    if (!IsWindow(window)) return true;
    return alpha == kOpaque ? MakeOrdinary(window) : MakeLayered(window, static_cast<BYTE>(alpha));
}

void TakeOrders(Orders& orders) {
    MSG message;
    while (PeekMessageA(&message, nullptr, kOrder, kOrder, PM_REMOVE))
        orders[reinterpret_cast<HWND>(message.wParam)] = message.lParam;
}

DWORD CALLBACK Run(void* ready) {
    Orders orders;  // of windows that hang; the last one of each window
    TakeOrders(orders);
    SetEvent(ready);  // the thread has its message queue now
    while (true) {
        const DWORD wait = orders.empty() ? INFINITE : kTryAgainMs;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, wait, QS_POSTMESSAGE);
        try {
            TakeOrders(orders);
        } catch (const std::bad_alloc&) {
            // One window stays as it is.
        }
        std::erase_if(orders, CarryOut);
    }
}

// The thread's identifier, 0 when there is no memory for one.
DWORD StartThread() {
    const Handle ready(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    DWORD id = 0;
    const Handle thread(CreateThread(nullptr, 0, Run, ready.Get(), 0, &id));
    if (!thread) return 0;
    WaitForSingleObject(ready.Get(), INFINITE);
    return id;
}

}  // namespace

void AskWindowChanger(HWND window, std::optional<std::uint8_t> alpha) {
    static DWORD thread = 0;
    if (thread == 0) thread = StartThread();
    PostThreadMessageA(thread, kOrder, reinterpret_cast<WPARAM>(window), alpha ? *alpha : kOpaque);
}

}  // namespace os
