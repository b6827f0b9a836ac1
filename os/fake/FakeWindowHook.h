// FakeWindowHook: messages to windows that need not exist.
#pragma once

#include <cstdint>

#include "os/WindowHook.h"

namespace os::fake {

// The window receives the message: its hooks hear it.
void SendWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam);

}  // namespace os::fake
