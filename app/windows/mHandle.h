// mHandle: finding and ending a running program by the path of its program file.
#pragma once

#include <string>

#include "os/desktop/Processes.h"

namespace mHandle {

// How a path is held against the name; both lower-case.
enum class Match {
    Ending = 0,    // the path ends with the name, so "aim.exe" also finds a program whose name merely ends so
    WholePath = 1  // the path is the name
};

// The first process that matches; 0 when there is none. A match in ending mode is remembered.
os::ProcessId FindProcess(const std::string& name, Match mode);

// The path, lower-case, that the last match in ending mode had; empty until then.
const os::Path& GetFoundProcessPath();

// Whether the process was terminated.
bool KillProcess(os::ProcessId id);

}  // namespace mHandle
