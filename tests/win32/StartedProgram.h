// StartedProgram: wrenlow.exe as a user starts it, in a process of its own, and what can be seen of it from
// outside.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

inline constexpr std::uint16_t kProgramPort = 11080;

class StartedProgram {
 public:
    // Starts it without an update check.
    StartedProgram();
    ~StartedProgram();  // whatever it does by then
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;

    // Waits for the tray icon's window, which comes first, and for the listener, which comes last.
    static bool ShowsItsIcon();
    static bool Listens();

    bool IsRunning() const;
    // Waits until it has ended; its exit code, or -1 when it goes on.
    int ExitCode() const;

    // The hidden main window.
    static HWND MainWindow() { return FindWindowA("WrenlowHidden", "Wrenlow"); }
    // Waits for a dialog or a box with the caption to be on the screen; null when none comes.
    static HWND Window(const char* caption);
    // The texts in the window, one a line, whatever process it belongs to.
    static std::string TextsIn(HWND window);
    static void Press(HWND window, int button) { PostMessageA(GetDlgItem(window, button), BM_CLICK, 0, 0); }

 private:
    PROCESS_INFORMATION process_ = {};
};
