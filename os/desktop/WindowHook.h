// WindowHook: listens to what a window of this thread receives, before the window's own procedure sees it.
// Nothing is kept from the window. A hook ends with its window by itself.
#pragma once

#include <cstdint>
#include <memory>

#include "base/Event.h"
#include "os/desktop/WindowHandle.h"

namespace os {

class WindowHook {
 public:
    // A message: its number, wParam and lParam. The handler may destroy the hook and the window. What it
    // throws is reported through Trap under "WindowHook:Message".
    Event<std::uint32_t, std::uintptr_t, std::intptr_t> Message;

    // Several hooks on one window hear each message in the reverse order of their making.
    explicit WindowHook(WindowHandle window);
    ~WindowHook();
    WindowHook(const WindowHook&) = delete;
    WindowHook& operator=(const WindowHook&) = delete;

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace os
