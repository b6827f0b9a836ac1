// HiddenWindow: a top-level window that is never shown, for what Windows tells windows only: the tray, menus,
// hotkeys, the end of the session.
//
// Top-level and not message-only, because announcements (TaskbarCreated, WM_QUERYENDSESSION) go to top-level
// windows. It has no taskbar button.
#pragma once

#include <windows.h>

#include <optional>

namespace os {

class HiddenWindow {
 public:
    // Throws RuntimeError with the system's error number. An owned window goes with its owner.
    explicit HiddenWindow(const char* title, HWND owner = nullptr);
    virtual ~HiddenWindow();
    HiddenWindow(const HiddenWindow&) = delete;
    HiddenWindow& operator=(const HiddenWindow&) = delete;

    HWND Handle() const { return handle_; }

 protected:
    // A message's result, or nothing to leave it to the system. Exceptions end here: they are reported
    // through Trap under "HiddenWindow:OnMessage". The handler may destroy the window, if it touches nothing
    // of it afterwards.
    virtual std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;

 private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND handle_;
};

}  // namespace os
