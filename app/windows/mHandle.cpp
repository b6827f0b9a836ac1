#include "app/windows/mHandle.h"

#include "core/modTools.h"

namespace mHandle {
namespace {
os::Path foundPath;
}

os::ProcessId FindProcess(const std::string& name, Match mode) {
    const auto wanted = LowerCase(os::Path::FromText(name).System());
    const auto wantedFile = wanted.substr(wanted.find_last_of("\\/") + 1);
    os::ProcessId found = 0;
    const auto mayMatch = [&](const os::Path& fileName) {
        return LowerCase(fileName.System()).ends_with(wantedFile);
    };
    os::VisitProcesses(mayMatch, [&](os::ProcessId id, const os::Path& rawPath) {
        const auto path = LowerCase(rawPath.System());
        if (mode == Match::WholePath ? path != wanted : !path.ends_with(wanted)) return false;
        if (mode == Match::Ending) foundPath = os::Path::FromSystem(path);
        found = id;
        return true;
    });
    return found;
}

const os::Path& GetFoundProcessPath() {
    return foundPath;
}

bool KillProcess(os::ProcessId id) {
    return os::EndProcess(id);
}

}  // namespace mHandle
