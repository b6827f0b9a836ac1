#include "os/win32/HiddenWindow.h"

#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace os {
namespace {

constexpr char kClassName[] = "WrenlowHidden";

[[noreturn]] void ThrowLastError(const char* what) {
    throw RuntimeError(static_cast<std::int32_t>(GetLastError()), what);
}

void RegisterOnce(WNDPROC procedure) {
    static const ATOM registered = [=] {
        WNDCLASSEXA windowClass{};
        windowClass.cbSize = sizeof windowClass;
        windowClass.lpfnWndProc = procedure;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.lpszClassName = kClassName;
        return RegisterClassExA(&windowClass);
    }();
    if (registered == 0) ThrowLastError("A window class cannot be registered");
}

}  // namespace

HiddenWindow::HiddenWindow(const char* title, HWND owner) {
    RegisterOnce(Procedure);
    handle_ = CreateWindowExA(WS_EX_TOOLWINDOW, kClassName, title, WS_POPUP, 0, 0, 0, 0, owner, nullptr,
                              GetModuleHandleA(nullptr), nullptr);
    if (handle_ == nullptr) ThrowLastError("A window cannot be created");
    // Only from here on do messages reach the object: its derived part does not exist before.
    SetWindowLongPtrA(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

HiddenWindow::~HiddenWindow() {
    SetWindowLongPtrA(handle_, GWLP_USERDATA, 0);
    DestroyWindow(handle_);
}

LRESULT CALLBACK HiddenWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const self = reinterpret_cast<HiddenWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (self != nullptr) {
        const auto result =
            Trap("HiddenWindow:OnMessage", [&] { return self->OnMessage(message, wParam, lParam); });
        if (result) return *result;
    }
    // The window goes with its object and not otherwise: a request to close all windows of the program is
    // followed by the one that understands it.
    if (message == WM_CLOSE) return 0;
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace os
