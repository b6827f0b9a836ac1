// aim.exe: stands in for the AIM client in tests and in the demonstration. It tells at its start how it signs
// on, by the proxy that its settings name, opens windows with the real client's titles, and stays until its
// buddy list is closed. Whoever started it holds the conversation with the service (sandbox/desk.py).
#include <windows.h>

#include "sandbox/aim/Settings.h"

namespace {

LRESULT CALLBACK BuddyListProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CLOSE:
        case WM_ENDSESSION:
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

// As whoever has started us wants it: minimized, perhaps.
int HowToShow() {
    STARTUPINFOA startup{};
    GetStartupInfoA(&startup);
    return (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 ? startup.wShowWindow : SW_SHOWNORMAL;
}

void OpenWindow(const char* windowClass, const std::string& title, int x, int y) {
    const HWND window = CreateWindowExA(0, windowClass, title.c_str(), WS_OVERLAPPEDWINDOW, x, y, 260, 120,
                                        nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
    ShowWindow(window, HowToShow());
}

// The buddy list is the last one; the other windows go with the program.
void OpenWindows() {
    constexpr char kBuddyList[] = "StandInBuddyList";
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = BuddyListProcedure;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = kBuddyList;
    windowClass.hbrBackground = GetSysColorBrush(COLOR_WINDOW);
    RegisterClassA(&windowClass);

    OpenWindow("STATIC", "fred - Instant Message", 300, 20);
    OpenWindow("STATIC", "Buddy Info: fred", 300, 160);
    OpenWindow("STATIC", "Chat Room: Wrens", 20, 160);
    OpenWindow(kBuddyList, ScreenName() + "'s Buddy List Window", 20, 20);
}

}  // namespace

int main() {
    Log("has started");
    OpenWindows();
    Log("signs on " + Way());

    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
    Log("has ended");
    return 0;
}
