// aim.exe: stands in for the AIM client in tests and in the demonstration. It signs on at its start, through
// the proxy that its settings name, opens windows with the real client's titles, and stays until its buddy
// list is closed.
#include <winsock2.h>
// after winsock2.h
#include <windows.h>

#include <exception>

#include "sandbox/aim/Settings.h"
#include "sandbox/aim/SignOn.h"

namespace {

constexpr UINT kNews = WM_APP;

std::unique_ptr<Line> bos;

void TrySignOn() {
    try {
        const auto proxy = Proxy();
        Log(proxy ? "signs on through " + proxy->host + ":" + std::to_string(proxy->port)
                  : "signs on directly");
        bos = SignOn(ScreenName(), Service(), proxy);
    } catch (const std::exception& error) {
        Log(std::string("cannot sign on: ") + error.what());
    }
}

void TakeNews() {
    if (!bos) return;
    try {
        if (bos->TakeNews()) return;
        Log("has lost its connection");
    } catch (const std::exception& error) {
        Log(std::string("has a broken connection: ") + error.what());
    }
    bos.reset();
}

void SignOff() {
    if (!bos) return;
    try {
        bos->Send(kGoodbye);
        Log("has signed off");
    } catch (const std::exception&) {
        // The line has just ended by itself.
    }
    bos.reset();
}

LRESULT CALLBACK BuddyListProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case kNews:
            TakeNews();
            return 0;
        case WM_CLOSE:
        case WM_ENDSESSION:
            SignOff();
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

HWND OpenWindow(const char* windowClass, const std::string& title, int x, int y) {
    const HWND window = CreateWindowExA(0, windowClass, title.c_str(), WS_OVERLAPPEDWINDOW, x, y, 260, 120,
                                        nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
    ShowWindow(window, HowToShow());
    return window;
}

// The buddy list; the other windows go with the program.
HWND OpenWindows() {
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
    return OpenWindow(kBuddyList, ScreenName() + "'s Buddy List Window", 20, 20);
}

}  // namespace

int main() {
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    Log("has started");
    TrySignOn();
    const HWND buddyList = OpenWindows();
    if (bos) {
        bos->AnnounceTo(buddyList, kNews);
        Log("is signed on as " + ScreenName());
    }

    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
    Log("has ended");
    return 0;
}
