#include "os/Files.h"
#include "os/SettingsFile.h"
#include "tests/contract/Implementation.h"

void PrepareContract() {
    const auto file = os::ProgramFolder() / "contract-settings";
    os::RemoveFile(file);
    os::SetSettingsFile(file.System(), "software\\Wrenlow\\");
}

bool CanAbort() {
    return true;
}
