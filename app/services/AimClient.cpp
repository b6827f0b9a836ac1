// The part of modSystem that asks the user and touches the running AIM client; Windows only.
#include <cstdint>
#include <string>

#include "app/services/mHandle.h"
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "core/modTools.h"
#include "os/EventLoop.h"
#include "os/MessageBox.h"
#include "os/Processes.h"

namespace modSystem {
namespace {

constexpr char kAimProgram[] = "aim.exe";
constexpr char kProxyKey[] = "software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";
constexpr auto kHive = os::RegistryHive::CurrentUser;

// How long the client's ending may take effect before it is opened again.
constexpr std::int64_t kReopenAfterMs = 1000;

// A value of the client's proxy settings: what is written, and what a right one reads as.
struct ProxyValue {
    const char* name;
    std::uint32_t type;
    const char* written;  // numbers as hexadecimal bytes, lowest first
    const char* read;
};

// 48 2B 00 00 is 11080, modSocket::kListeningPort.
static_assert(modSocket::kListeningPort == 0x2B48);
constexpr ProxyValue kProxyValues[] = {
    {"Enabled", os::RegistryType::DWord, "01 00 00 00", "1"},
    {"Host", os::RegistryType::String, "127.0.0.1", "127.0.0.1"},
    {"Port", os::RegistryType::DWord, "48 2B 00 00", "11080"},
    {"Protocol", os::RegistryType::String, "SOCKS4", "SOCKS4"},
};

void Write(const char* name, std::uint32_t type, const char* written) {
    const bool isNumber = type == os::RegistryType::DWord;
    modRegistry::SetValue(kHive, kProxyKey, name, isNumber ? HexToBytes(written) : written, type);
}

bool IsSetUp() {
    for (const auto& value : kProxyValues) {
        if (modRegistry::QueryValue(kHive, kProxyKey, value.name) != value.read) return false;
    }
    return true;
}

bool Confirms(const char* text, const char* title = os::kApplicationTitle) {
    return os::ShowMessageBox(text, title, os::BoxIcon::Information, os::BoxButtons::OkCancel) ==
           os::BoxResult::Ok;
}

}  // namespace

void SetupAim(bool bForce) {
    if (!bForce && modRegistry::ReadSetting("setupaim") != "1") return;
    if (IsSetUp()) return;
    for (const auto& value : kProxyValues) Write(value.name, value.type, value.written);
    // Asked after writing, on purpose: Cancel only spares the running client.
    if (mHandle::FindProcess(kAimProgram, mHandle::Match::Ending) != 0 &&
        !Confirms("Wrenlow will now change AIM's connection preferences", "Final Setup")) {
        return;
    }
    RestartAIM(false, false);
}

void RevertSettings(bool bForce, bool bWriteOnly) {
    if (!bForce && modRegistry::ReadSetting("revertsettings") != "1") return;
    Write("Enabled", os::RegistryType::DWord, "00 00 00 00");
    if (bWriteOnly) return;
    os::ProcessPendingEvents();
    RestartAIM(false, false);
}

void RestartAIM(bool bNoRestart, bool bSilent) {
    Trap("modSystem:RestartAIM", [&] {
        const auto client = mHandle::FindProcess(kAimProgram, mHandle::Match::Ending);
        // Kept here: messages run while the boxes are open, and may look for a process themselves.
        const auto path = mHandle::GetFoundProcessPath();
        CloseAllConnections();
        if (client == 0) return;
        if (!bSilent && !Confirms("Wrenlow will now close AIM to finish changing the connection settings."))
            return;
        if (!mHandle::KillProcess(client)) {
            if (!bSilent) os::ShowMessageBox("There was a problem closing AIM.");
            return;
        }
        if (bNoRestart) return;
        if (!bSilent) {
            os::ShowMessageBox("Press OK to open AIM.", os::kApplicationTitle, os::BoxIcon::Information);
        }
        os::RunEventLoopUntil([] { return false; }, kReopenAfterMs);
        os::StartMinimized(path);
    });
}

void doErr(bool bNoText) {
    Trap("modSystem:doErr", [&] {
        std::string text;
        if (!bNoText) {
            text =
                "You must be signed on to at least one screenname to use this feature.\r\n"
                "\r\n"
                "If you ARE signed on to AIM, the connection settings to AIM are not set up correctly. Make "
                "sure "
                "they are as follows:\r\n"
                "\r\n"
                "Protocol: SOCKS4\r\n"
                "Proxy Host: 127.0.0.1\r\n"
                "Proxy Port: " +
                std::to_string(modSocket::ListeningPort());
        }
        os::ShowMessageBox(text, os::kApplicationTitle, os::BoxIcon::Error);
    });
}

}  // namespace modSystem
