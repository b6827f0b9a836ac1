// Resolution: how large things are on each screen. What the system tells in pixels (metrics, fonts) it tells
// for the resolution that the first screen had when the user signed on; other screens, and this one after a
// change, may have another.
#pragma once

#include "os/desktop/Icons.h"

namespace os {

// Dots per inch that the system tells its own lengths for.
int SystemDpi();

// Dots per inch of the screen that the place lies on. Before Windows 8.1, and to a program that is aware of
// one resolution only, all screens have the system's.
int DpiAt(ScreenPoint place);

// A length of the system's on a screen of that resolution.
int ScaledFor(int dpi, int systemsPixels);

}  // namespace os
