// FakeDesktop: the dialogs for files, web pages and documents, the clipboard, other programs and downloaded
// files of a test's machine.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "os/desktop/Processes.h"
#include "os/desktop/WindowHook.h"
#include "os/fake/FakeWorld.h"

namespace os::fake {

struct FileDialogs {
    struct Asked {
        WindowHandle owner;
        std::string title;
        std::string proposedName;
    };
    std::vector<Asked> asked;           // oldest first
    std::optional<std::string> answer;  // the path that every dialog answers; nothing is Cancel
    std::function<void()> during;       // runs inside every dialog while it is "open"
};
inline FileDialogs& fileDialogs = Fresh<FileDialogs>();

struct Shell {
    // Addresses and files, oldest first; those that were printed with "print " in front.
    std::vector<std::string> opened;
    std::string clipboard;
};
inline Shell& shell = Fresh<Shell>();

struct FakeProcess {
    ProcessId id;
    std::string path;
    bool mayBeEnded = true;
};
struct Processes {
    std::vector<FakeProcess> running;  // EndProcess removes from it, StartMinimized does not add to it
    std::vector<std::string> started;  // by StartMinimized, oldest first
};
inline Processes& processes = Fresh<Processes>();

// Files written piece by piece, to those of FakeFiles.h.
struct FileWriters {
    std::uint64_t room = UINT64_MAX;       // bytes in one file; the disk is full then
    std::set<std::string> isFromInternet;  // the paths marked so
};
inline FileWriters& fileWriters = Fresh<FileWriters>();

// The window, which need not exist, receives the message: its hooks hear it.
void SendWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam);

}  // namespace os::fake
