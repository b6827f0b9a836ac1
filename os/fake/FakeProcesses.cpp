#include "os/fake/FakeProcesses.h"

#include <algorithm>

#include "os/fake/FakeLoop.h"

namespace os {

namespace fake {

std::vector<FakeProcess>& RunningProcesses() {
    static std::vector<FakeProcess> processes;
    return processes;
}

std::vector<std::string>& StartedPrograms() {
    static std::vector<std::string> programs;
    return programs;
}

void ResetProcesses() {
    RunningProcesses().clear();
    StartedPrograms().clear();
}
const WorldPart part(ResetProcesses);

}  // namespace fake

void VisitProcesses(const std::function<bool(ProcessId, const std::string&)>& visit) {
    for (const auto& process : std::vector(fake::RunningProcesses())) {
        if (visit(process.id, process.path)) return;
    }
}

bool EndProcess(ProcessId id) {
    auto& processes = fake::RunningProcesses();
    const auto found = std::find_if(processes.begin(), processes.end(), [=](const auto& process) {
        return process.id == id && process.mayBeEnded;
    });
    if (found == processes.end()) return false;
    processes.erase(found);
    return true;
}

void StartMinimized(const std::string& path) {
    fake::StartedPrograms().push_back(path);
}

}  // namespace os
