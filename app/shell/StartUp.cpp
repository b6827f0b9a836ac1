#include "app/shell/StartUp.h"

#include "app/services/SharedForm.h"
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "app/shell/frmMain.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "desktop/frmSettings.h"
#include "desktop/frmUpdate.h"
#include "desktop/modHotKeys.h"
#include "os/CommandLine.h"
#include "os/EventLoop.h"
#include "os/Tcp.h"

namespace modSystem {

void StartWrenlow(frmMain& form) {
    Trap("modSystem:StartWrenlow", [&] {
        form.ShowTrayIcon();
        modHotKeys::InitHotKeys(form.m_cHotKey(), form.hWnd());
        os::ProcessPendingEvents();  // so that the icon is seen before the slower steps
        if (form.IsUnloaded()) return;
        SharedForm<frmSettings>().Start(true);
        modSocket::SetListeningPort(modSocket::kListeningPort);
        modSocket::InitWs();
        modSocket::WinsockStartListen();
        SetupAim(false);
        if (form.IsUnloaded()) return;  // SetupAim may have asked the user something
        if (os::CommandLineArguments() == "d" || modRegistry::ReadSetting("checkupdate") == "0") return;
        SharedForm<frmUpdate>().CheckForUpdate(false);
    });
}

void ShutDown(bool bAsk) {
    CloseAllConnections();
    RevertSettings(false, !bAsk);
    modHotKeys::ReleaseHotKeys();
    os::FlushClosedSockets(kMostEndMilliseconds);
}

}  // namespace modSystem
