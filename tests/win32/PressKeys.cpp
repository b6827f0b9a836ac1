// press_keys CODE...: presses the keys of these virtual-key codes together and lets them go in reverse.
// press_keys wait: says "waiting" and does nothing until it is ended, as a stand-in for another program.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int count, char** arguments) {
    if (count == 2 && std::strcmp(arguments[1], "wait") == 0) {
        std::puts("waiting");
        std::fflush(stdout);
        Sleep(INFINITE);
    }
    for (int i = 1; i < count; ++i) keybd_event(static_cast<BYTE>(std::atoi(arguments[i])), 0, 0, 0);
    for (int i = count - 1; i > 0; --i) {
        keybd_event(static_cast<BYTE>(std::atoi(arguments[i])), 0, KEYEVENTF_KEYUP, 0);
    }
    return 0;
}
