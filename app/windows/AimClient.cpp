#include "app/windows/AimClient.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

#include "app/services/Settings.h"
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "app/windows/mHandle.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "core/modTools.h"
#include "net/EventLoop.h"
#include "os/desktop/MessageBox.h"
#include "os/desktop/Processes.h"

namespace modSystem {

Event<bool> EndRequest;

namespace {

constexpr char kAimProgram[] = "aim.exe";
constexpr char kProxyKey[] = "software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";
// The values that the client had before ours, under the same names.
constexpr char kKeptKey[] = "software\\Wrenlow\\aimproxy";
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
constexpr std::size_t kHost = 1, kPort = 2;  // in the table

// How often work on the client has been called off.
int timesCalledOff = 0;

// Of a piece of work that waits for the user or the clock: whether it has been called off since it began.
class Work {
 public:
    bool IsCalledOff() const { return begun_ != timesCalledOff; }

 private:
    int begun_ = timesCalledOff;
};

void Write(const char* name, std::uint32_t type, const char* written) {
    const bool isNumber = type == os::RegistryType::DWord;
    modRegistry::SetValue(kHive, kProxyKey, name, isNumber ? HexToBytes(written) : written, type);
}

bool ReadsAsOurs(const ProxyValue& value) {
    return modRegistry::QueryValue(kHive, kProxyKey, value.name) == value.read;
}

bool IsSetUp() {
    return std::all_of(std::begin(kProxyValues), std::end(kProxyValues), ReadsAsOurs);
}

// Whether the values are ours or were, as where the proxy has been switched off since.
bool LeadsToUs() {
    return ReadsAsOurs(kProxyValues[kHost]) && ReadsAsOurs(kProxyValues[kPort]);
}

std::optional<os::RegistryValue> Read(const char* key, const char* name) {
    constexpr std::size_t kMaxBytes = 1023;  // modRegistry's
    return os::ReadRegistryValue(kHive, key, name, kMaxBytes);
}

// Makes the values under one key those under the other, byte for byte; what is missing there goes.
void CopyValues(const char* from, const char* to) {
    for (const auto& [name, type, written, read] : kProxyValues) {
        const auto value = Read(from, name);
        if (value) {
            os::WriteRegistryValue(kHive, to, name, value->type, value->data);
        } else {
            os::RemoveRegistryValue(kHive, to, name);
        }
    }
}

bool AnyKept() {
    return std::any_of(std::begin(kProxyValues), std::end(kProxyValues),
                       [](const ProxyValue& value) { return Read(kKeptKey, value.name).has_value(); });
}

bool Confirms(const char* text, const char* title = os::kApplicationTitle) {
    return os::ShowMessageBox(text, title, os::BoxIcon::Information, os::BoxButtons::OkCancel) ==
           os::BoxResult::Ok;
}

}  // namespace

void SetupAim(bool bForce) {
    if (!bForce && !settings::IsOn("setupaim")) return;
    if (IsSetUp()) return;
    if (!LeadsToUs()) CopyValues(kProxyKey, kKeptKey);
    for (const auto& value : kProxyValues) Write(value.name, value.type, value.written);
    const Work work;
    // Asked after writing, on purpose: Cancel only spares the running client.
    if (mHandle::FindProcess(kAimProgram, mHandle::Match::Ending) != 0 &&
        !Confirms("Wrenlow will now change AIM's connection preferences", "Final Setup")) {
        return;
    }
    if (!work.IsCalledOff()) RestartAIM(false, false);
}

void LookAtClient(ClientFacts& facts) {
    facts.isKnown = true;
    facts.runs = mHandle::FindProcess(kAimProgram, mHandle::Match::Ending) != 0;
    facts.isSetUp = IsSetUp();
}

void RevertSettings(bool bForce, bool bWriteOnly) {
    if (!bForce && !settings::IsOn("revertsettings")) return;
    if (AnyKept()) {
        CopyValues(kKeptKey, kProxyKey);
    } else {
        Write("Enabled", os::RegistryType::DWord, "00 00 00 00");
    }
    if (bWriteOnly) return;
    const Work work;
    net::ProcessPendingEvents();
    if (!work.IsCalledOff()) RestartAIM(false, false);
}

void CallOffWork() {
    ++timesCalledOff;
}

void RestartAIM(bool bNoRestart, bool bSilent) {
    Trap("modSystem:RestartAIM", [&] {
        const Work work;
        const auto client = mHandle::FindProcess(kAimProgram, mHandle::Match::Ending);
        // Kept here: messages run while the boxes are open, and may look for a process themselves.
        const auto path = mHandle::GetFoundProcessPath();
        CloseAllConnections();
        if (client == 0) return;
        if (!bSilent && !Confirms("Wrenlow will now close AIM to finish changing the connection settings."))
            return;
        if (work.IsCalledOff()) return;
        if (!mHandle::KillProcess(client)) {
            if (!bSilent) os::ShowMessageBox("There was a problem closing AIM.");
            return;
        }
        if (bNoRestart) return;
        if (!bSilent) {
            os::ShowMessageBox("Press OK to open AIM.", os::kApplicationTitle, os::BoxIcon::Information);
        }
        if (work.IsCalledOff()) return;
        net::RunEventLoopUntil([&] { return work.IsCalledOff(); }, kReopenAfterMs);
        if (!work.IsCalledOff()) os::StartMinimized(path);
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
