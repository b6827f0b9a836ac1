// What another process holds of the system. The documented calls (GetProcessHandleCount, GetGuiResources)
// answer zero under Wine; the lists that they count do exist there, and on Windows.
#pragma once

#include <windows.h>

#include <string>

// "handles N gdi N windows N" of the process; a text that begins with "no" when it cannot be looked into.
std::string Holdings(DWORD process);
