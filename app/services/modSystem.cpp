#include "app/services/modSystem.h"

#include "app/services/SafeFileName.h"
#include "app/services/modRegistry.h"
#include "base/Trap.h"
#include "core/SessionHooks.h"
#include "core/modSocket.h"
#include "os/Files.h"

namespace modSystem {

void CloseAllConnections() {
    Trap("modSystem:CloseAllConnections", [] {
        for (std::size_t slot = 0; slot < modSocket::SlotCount(); ++slot) {
            auto* const connection = modSocket::Connection(slot);
            if (connection == nullptr) continue;
            connection->CloseConnection();
            DeleteUserinfoBag(connection->hasScreenNameOrig(true));
        }
    });
}

std::string GetSNPath(const std::string& screenName) {
    return Trap("modSystem:GetSNPath", [&]() -> std::string {
        const auto name = SafeFileName(NormalizeScreenName(screenName));
        if (name.empty()) return {};
        const auto appData =
            modRegistry::QueryValue(os::RegistryHive::CurrentUser, "Volatile Environment", "APPDATA");
        const auto windows = os::WindowsFolder();
        for (const auto& folder : {appData + "\\Aim\\" + name, windows + "\\aim95\\" + name,
                                   windows + "\\Application Data\\Aim\\" + name}) {
            if (os::FolderExists(folder)) return folder;
        }
        return {};
    });
}

void DeleteUserinfoBag(const std::string& screenName) {
    Trap("modSystem:DeleteUserinfoBag", [&] {
        if (NormalizeScreenName(screenName).empty()) return;
        const auto file = GetSNPath(screenName) + "\\userinfo.bag";
        if (os::FileExists(file)) os::RemoveFile(file);
    });
}

}  // namespace modSystem
