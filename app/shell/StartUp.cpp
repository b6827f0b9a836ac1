#include "app/shell/StartUp.h"

#include "app/services/Settings.h"
#include "app/services/modSystem.h"
#include "app/shell/frmMain.h"
#include "app/windows/AimClient.h"
#include "app/windows/SharedForm.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "desktop/ApplySettings.h"
#include "desktop/frmUpdate.h"
#include "desktop/modHotKeys.h"
#include "net/EventLoop.h"
#include "net/Tcp.h"
#include "os/desktop/CommandLine.h"
#include "os/desktop/MessageBox.h"
#include "os/desktop/OnlyInstance.h"

namespace modSystem {
namespace {
constexpr char kQuietly[] = "d";  // the command line that asks for no update check
}

bool IsSecondStart() {
    if (os::ClaimOnlyInstance()) return false;
    if (os::CommandLineArguments() != kQuietly) {
        os::ShowMessageBox("Wrenlow is running already. Its icon is in the notification area.",
                           os::kApplicationTitle, os::BoxIcon::Information);
    }
    return true;
}

std::string WhyPortIsRefused(std::int32_t number, std::uint16_t port) {
    const auto name = "Port " + std::to_string(port);
    if (number == ListenError::kRefused) {
        return name +
               " is kept by Windows itself: it lies in a range that is reserved, mostly for Hyper-V, WSL or "
               "Docker. \"When something does not work\" in the manual has the command that shows the ranges "
               "and the way to free the port. Then start Wrenlow again.";
    }
    return name +
           " is in use by another program, or not free yet after one has ended. Close that program (its "
           "number is in the list of \"netstat -ano\") and start Wrenlow again.";
}

void StartWrenlow(frmMain& form) {
    Trap("modSystem:StartWrenlow", [&] {
        form.ShowTrayIcon();
        modHotKeys::InitHotKeys(form.m_cHotKey(), form.hWnd());
        net::ProcessPendingEvents();  // so that the icon is seen before the slower steps
        if (form.IsUnloaded()) return;
        // The client is served first: what the settings ask for touches other programs' windows.
        modSocket::InitWs();
        form.StartListening();
        StartSettings();
        SetupAim(false);
        if (form.IsUnloaded()) return;  // SetupAim may have asked the user something
        if (os::CommandLineArguments() == kQuietly || !settings::IsOn("checkupdate")) return;
        SharedForm<frmUpdate>().CheckForUpdate(false);
    });
}

void ShutDown(bool bAsk) {
    const bool asks = bAsk && settings::IsOn("revertsettings");
    RevertSettings(false, !asks);
    if (!asks) CloseAllConnections();  // otherwise they are closed before the question
    modHotKeys::ReleaseHotKeys();
    os::ReleaseOnlyInstance();
    net::FlushClosedSockets(kMaxEndMilliseconds);
}

}  // namespace modSystem
