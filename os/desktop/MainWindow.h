// MainWindow: the program's hidden top-level window. It is never shown; it receives what Windows tells
// top-level windows only (the end of the session, the taskbar's restart) and lends its handle to the tray
// icon, the hotkeys and the boxes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/Event.h"
#include "os/desktop/WindowHandle.h"

namespace os {

class MainWindow {
 public:
    // The session ends (true) or somebody else has prevented it (false). After `true` the process is ended
    // soon after the handler returns.
    Event<bool> EndSession;
    // Somebody asks the window to close: the system's task list, an installer.
    Event<> CloseRequested;

    // Throws RuntimeError with the system's error number.
    explicit MainWindow(const std::string& title);
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    WindowHandle Handle() const;

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace os
