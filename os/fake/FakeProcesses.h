// FakeProcesses: the programs that "run" on the test's machine.
#pragma once

#include <string>
#include <vector>

#include "os/Processes.h"

namespace os::fake {

struct FakeProcess {
    ProcessId id;
    std::string path;
    bool mayBeEnded = true;
};

// The list that VisitProcesses walks; EndProcess removes from it, StartMinimized does not add to it.
std::vector<FakeProcess>& RunningProcesses();

// What StartMinimized was asked for, oldest first.
std::vector<std::string>& StartedPrograms();

void ResetProcesses();

}  // namespace os::fake
