// FakeForeground: the window that the program under test brought to the foreground.
#pragma once

#include "os/Foreground.h"

namespace os::fake {

// The one that was brought there last; 0 for none.
WindowHandle ForegroundWindow();

}  // namespace os::fake
