#include "app/services/mHandle.h"

#include "core/modTools.h"

namespace mHandle {
namespace {
std::string foundPath;
}

os::ProcessId FindProcess(const std::string& name, Match mode) {
    const auto wanted = LowerCase(name);
    os::ProcessId found = 0;
    os::VisitProcesses([&](os::ProcessId id, const std::string& rawPath) {
        const auto path = LowerCase(rawPath);
        if (mode == Match::WholePath ? path != wanted : !path.ends_with(wanted)) return false;
        if (mode == Match::Ending) foundPath = path;
        found = id;
        return true;
    });
    return found;
}

const std::string& GetFoundProcessPath() {
    return foundPath;
}

bool KillProcess(os::ProcessId id) {
    return os::EndProcess(id);
}

}  // namespace mHandle
