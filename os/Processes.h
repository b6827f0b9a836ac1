// Processes: the running programs of the user, and starting and ending one. Windows only; the native program
// controls no AIM client.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace os {

using ProcessId = std::uint32_t;  // 0 is no process

// Visits the processes that may be opened with all rights, in the system's order, with the full path of their
// program file; ends when `visit` returns true.
void VisitProcesses(const std::function<bool(ProcessId id, const std::string& path)>& visit);

// Ends a process at once, with exit code 0, and waits a moment until it is gone. Whether that worked.
bool EndProcess(ProcessId id);

// Starts a program file, its window minimized and with the focus. Throws RuntimeError with the system's error
// number.
void StartMinimized(const std::string& path);

}  // namespace os
