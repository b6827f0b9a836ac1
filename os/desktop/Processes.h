// Processes: the running programs of the user, and starting and ending one. Windows only; the native program
// controls no AIM client.
#pragma once

#include <cstdint>
#include <functional>

#include "os/Path.h"

namespace os {

using ProcessId = std::uint32_t;  // 0 is no process

// Visits the processes of this session whose program file has a name that `isWanted`, in the system's order,
// with the full path of that file; ends when `visit` returns true. Other processes are not opened, and of the
// wanted ones nothing but the path is asked; one that does not even tell that is passed over.
void VisitProcesses(const std::function<bool(const Path& fileName)>& isWanted,
                    const std::function<bool(ProcessId id, const Path& path)>& visit);

// Ends a process at once, with exit code 0, and waits a moment until it is gone. Whether that worked.
bool EndProcess(ProcessId id);

// Starts a program file, its window minimized and with the focus. Throws RuntimeError with the system's error
// number.
void StartMinimized(const Path& path);

}  // namespace os
