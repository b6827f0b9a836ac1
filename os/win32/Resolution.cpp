#include "os/win32/Resolution.h"

#include <windows.h>

#include "os/win32/Gdi.h"

namespace os {
namespace {

// GetDpiForMonitor and its MDT_EFFECTIVE_DPI, from Windows 8.1 on.
using MonitorFunction = HRESULT(WINAPI*)(HMONITOR, int, UINT*, UINT*);
constexpr int kEffectiveDpi = 0;
// LOAD_LIBRARY_SEARCH_SYSTEM32: a file of that name beside the program is not meant.
constexpr DWORD kFromSystemFolder = 0x800;

MonitorFunction FindMonitorFunction() {
    const HMODULE library = LoadLibraryExA("shcore.dll", nullptr, kFromSystemFolder);
    if (library == nullptr) return nullptr;
    return reinterpret_cast<MonitorFunction>(
        reinterpret_cast<void*>(GetProcAddress(library, "GetDpiForMonitor")));
}

}  // namespace

int SystemDpi() {
    return GetDeviceCaps(ScreenDc(), LOGPIXELSY);
}

int DpiAt(ScreenPoint place) {
    static const MonitorFunction tellDpi = FindMonitorFunction();
    const HMONITOR screen = MonitorFromPoint({place.x, place.y}, MONITOR_DEFAULTTONEAREST);
    UINT across = 0, down = 0;
    if (tellDpi == nullptr || tellDpi(screen, kEffectiveDpi, &across, &down) != S_OK) return SystemDpi();
    return static_cast<int>(down);
}

int ScaledFor(int dpi, int systemsPixels) {
    return MulDiv(systemsPixels, dpi, SystemDpi());
}

}  // namespace os
