// WindowHandle: a window of the operating system as a number, for handing on between contracts; 0 is none.
// Nothing outside os/ looks into it.
#pragma once

#include <cstdint>

namespace os {

using WindowHandle = std::uintptr_t;

}  // namespace os
