#include "desktop/ApplySettings.h"

#include <string>

#include "app/services/Settings.h"
#include "app/services/modRegistry.h"
#include "base/Trap.h"
#include "desktop/modHotKeys.h"
#include "desktop/modTrans.h"
#include "os/Files.h"

namespace {

constexpr const char* kRunKey = "software\\microsoft\\windows\\CurrentVersion\\run";
constexpr const char* kRunValue = "Wrenlow";

void ApplyRunEntry() {
    const auto hive = os::RegistryHive::CurrentUser;
    if (!settings::IsOn("onstartup")) {
        modRegistry::DeleteValue(hive, kRunKey, kRunValue);
        return;
    }
    os::WriteRegistryPath(hive, kRunKey, kRunValue, os::ProgramFile());
}

}  // namespace

std::optional<RuntimeError> ApplySettings() {
    ApplyRunEntry();
    auto failure = modHotKeys::RegisterHotkeys(modHotKeys::LoadHotkeys(), settings::IsOn("enablehotkey"));
    modTrans::LoadTransSettings();
    return failure;
}

void StartSettings() {
    Trap("frmSettings:Apply", [] {
        settings::StoreMissing();
        if (const auto failure = ApplySettings()) throw RuntimeError(*failure);
    });
}
