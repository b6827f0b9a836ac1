#include "app/shell/frmMain.h"

#include <utility>

#include "app/shell/StartUp.h"
#include "app/shell/modMenu.h"
#include "app/windows/AimClient.h"
#include "app/windows/SharedForm.h"
#include "app/windows/modError.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "desktop/modHotKeys.h"
#include "desktop/modTrans.h"
#include "features/SessionFeatures.h"
#include "os/desktop/Dialog.h"

frmMain::frmMain() : relay_(SessionFeatures()) {
    SetErrorReporter(modError::ReportError);
    os::SetDialogOwner(window_.Handle());
    tmrTrans_.Tick.Bind<&frmMain::tmrTrans_Tick>(*this);
    tmrListen_.Tick.Bind<&frmMain::tmrListen_Tick>(*this);
    hotKey_.HotKeyPress.Bind<&frmMain::m_cHotKey_HotKeyPress>(*this);
    modSystem::EndRequest.Bind<&frmMain::modSystem_EndRequest>(*this);
    window_.EndSession.Bind<&frmMain::window_EndSession>(*this);
    window_.CloseRequested.Bind<&frmMain::window_CloseRequested>(*this);
}

frmMain::~frmMain() {
    modSystem::EndRequest.Reset();
    modHotKeys::ReleaseHotKeys();
    modSocket::InitWs();
    UnloadForms();
    modError::DiscardWindows();
    os::SetDialogOwner(0);
    SetErrorReporter(nullptr);
}

void frmMain::Form_Load() {
    tmrTrans_.StartRepeating(modTrans::kTimerMilliseconds);
    modSystem::StartWrenlow(*this);
}

void frmMain::ShowTrayIcon() {
    modMenu::LoadMenuIcons(imageList1_);
    frmSysTray_ = modMenu::BuildTrayMenu(hWnd(), imageList1_);
    frmSysTray_->SysTrayMouseDown.Bind<&frmMain::m_frmSysTray_SysTrayMouseDown>(*this);
    frmSysTray_->SysTrayDoubleClick.Bind<&frmMain::m_frmSysTray_SysTrayDoubleClick>(*this);
    frmSysTray_->MenuClick.Bind<&frmMain::m_frmSysTray_MenuClick>(*this);
}

void frmMain::StartListening() {
    listenTriesLeft_ = kListenTries;
    tmrListen_Tick();
}

void frmMain::tmrListen_Tick() {
    Trap("modSocket:WinsockStartListen", [this] {
        try {
            modSocket::Listen();
        } catch (const RuntimeError& error) {
            if (error.Number() != modSystem::ListenError::kInUse &&
                error.Number() != modSystem::ListenError::kRefused)
                throw;
            if (listenTriesLeft_-- > 0) return tmrListen_.StartOnce(kListenAgainMs);
            const auto port = modSocket::ListeningPort();
            throw RuntimeError(error.Number(), modSystem::WhyPortIsRefused(error.Number(), port));
        }
    });
}

// Without questions the end comes over one with questions too, whose boxes then close.
void frmMain::Unload(bool bAsk) {
    if (bAsk && unloaded_) return;
    modSystem::CallOffWork();
    if (std::exchange(unloaded_, true)) return net::QuitEventLoop(0);
    if (bAsk) Form_QueryUnload();
    Form_Unload(bAsk);
    if (!bAsk) Form_QueryUnload();  // the taskbar may be slow, and the session ends
}

// Never cancelled, whatever the reason.
void frmMain::Form_QueryUnload() {
    frmSysTray_.reset();
}

void frmMain::Form_Unload(bool bAsk) {
    tmrTrans_.Stop();
    tmrListen_.Stop();
    relay_.StopListening();
    Trap("modSystem:ShutDown", [&] { modSystem::ShutDown(bAsk); });
    net::QuitEventLoop(0);
}

void frmMain::tmrTrans_Tick() {
    modTrans::TimerTick();
    ShowNamesInTip();
}

// Looked up at each tick: names come and go in several ways, and there are few.
void frmMain::ShowNamesInTip() {
    if (!frmSysTray_) return;
    const auto tip = modMenu::TipText();
    if (tip != frmSysTray_->ToolTip()) frmSysTray_->ToolTip(tip);
}

void frmMain::m_cHotKey_HotKeyPress(const std::string& sName, std::uint32_t, std::uint32_t,
                                    const std::string& sText) {
    modHotKeys::RunHotKeyAction(sName, sText);
}

void frmMain::m_frmSysTray_SysTrayMouseDown(std::int32_t eButton) {
    constexpr std::int32_t kRightButton = 2;
    if (eButton == kRightButton) frmSysTray_->ShowMenu();
}

void frmMain::m_frmSysTray_SysTrayDoubleClick(std::int32_t eButton) {
    constexpr std::int32_t kLeftButton = 1;
    if (eButton == kLeftButton) modMenu::DoMenuCommand(modMenu::kOpenKey);
}

void frmMain::m_frmSysTray_MenuClick(std::int32_t, const std::string& sKey) {
    modMenu::DoMenuCommand(sKey);
}

void frmMain::modSystem_EndRequest(bool bAsk) {
    Unload(bAsk);
}

// Windows ends us soon after this returns: everything is done here and nothing is left for the loop.
void frmMain::window_EndSession(bool ending) {
    if (ending) Unload(false);
}
void frmMain::window_CloseRequested() {
    Unload(true);
}
