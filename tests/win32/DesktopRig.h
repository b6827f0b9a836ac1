// DesktopRig: what the tests on a real desktop have in common: another process, keys, the program's settings.
// The other process is the test program itself, started with a word (see ActAsOtherProcess).
#pragma once

#include <windows.h>

#include <functional>
#include <initializer_list>
#include <string>

// Handles the window messages that wait.
void Pump();
// Asks until the answer is yes, handling messages; false when patience (10 s) is over.
bool Eventually(const std::function<bool()>& answer);

void PressKeys(std::initializer_list<BYTE> keys);

// Deletes what the program keeps in the registry of the user.
void ForgetSettings();

HWND MakeWindow(const char* title);
// The alpha of a layered window; -1 for one that is none, -2 for one without an alpha.
int AlphaOf(HWND window);

inline constexpr const char* kImTitle = "Bob - Instant Message";
inline constexpr const char* kChatTitle = "Chat Room: Wrens";
inline constexpr const char* kOtherTitle = "Instant Message - Bob";
inline constexpr const char* kHolding = "holding a hotkey";  // Ctrl+Shift+F7

// A second process; it ends with the object.
class OtherProcess {
 public:
    // "windows" opens the three windows above, "hotkey" the last one. With a path the test program is copied
    // there and that copy is started.
    explicit OtherProcess(const std::string& word, const std::string& path = {});
    ~OtherProcess();
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    bool HasEnded() const;
    // Waits for a window with the title; null when none comes.
    static HWND Window(const char* title);

 private:
    PROCESS_INFORMATION process_ = {};
    std::string copy_;
    bool started_ = false;
};

int ActAsOtherProcess(const std::string& word);
