#include "os/desktop/OnlyInstance.h"

#include "os/win32/Handle.h"

namespace os {
namespace {

constexpr char kName[] = "Local\\Wrenlow.IsRunning";  // in the session's own space of names

Handle claim;

}  // namespace

// A process with higher rights may keep the name from us: then it has it.
bool ClaimOnlyInstance() {
    Handle name(CreateMutexA(nullptr, FALSE, kName));
    const DWORD number = GetLastError();
    if (number == ERROR_ALREADY_EXISTS || number == ERROR_ACCESS_DENIED) return false;
    claim = std::move(name);
    return true;
}

void ReleaseOnlyInstance() {
    claim.Close();
}

}  // namespace os
