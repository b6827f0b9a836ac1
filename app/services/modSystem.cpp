#include "app/services/modSystem.h"

#include <set>

#include "app/services/SafeFileName.h"
#include "app/services/modRegistry.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "os/Files.h"

namespace modSystem {
namespace {

// While all connections close: whose file has been tried. A closing connection tries by itself, and a name
// can have had many; a file that another program holds is told once.
std::set<std::string>* triedNames = nullptr;

struct Closing {
    Closing() { triedNames = &tried; }
    ~Closing() { triedNames = nullptr; }
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;
    std::set<std::string> tried;
};

}  // namespace

void CloseAllConnections() {
    Trap("modSystem:CloseAllConnections", [] {
        const Closing closing;
        for (std::size_t slot = 0; slot < modSocket::SlotCount(); ++slot) {
            auto* const connection = modSocket::Connection(slot);
            if (connection == nullptr) continue;
            connection->CloseConnection();
            DeleteUserinfoBag(connection->hasScreenNameOrig(true));
        }
    });
}

os::Path GetSNPath(const std::string& screenName) {
    return Trap("modSystem:GetSNPath", [&]() -> os::Path {
        const auto name = SafeFileName(NormalizeScreenName(screenName));
        const auto windows = os::WindowsFolder();
        if (name.empty() || windows.IsEmpty()) return {};
        const auto appData =
            os::ReadRegistryPath(os::RegistryHive::CurrentUser, "Volatile Environment", "APPDATA");
        for (const auto& folder : {appData / "Aim" / name, windows / "aim95" / name,
                                   windows / "Application Data" / "Aim" / name}) {
            if (os::FolderExists(folder)) return folder;
        }
        return {};
    });
}

void DeleteUserinfoBag(const std::string& screenName) {
    Trap("modSystem:DeleteUserinfoBag", [&] {
        const auto name = NormalizeScreenName(screenName);
        if (name.empty() || os::WindowsFolder().IsEmpty()) return;
        if (triedNames != nullptr && !triedNames->insert(name).second) return;
        const auto file = GetSNPath(screenName) / "userinfo.bag";
        if (os::FileExists(file)) os::RemoveFile(file);
    });
}

}  // namespace modSystem
