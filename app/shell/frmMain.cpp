#include "app/shell/frmMain.h"

#include <utility>

#include "app/services/SharedForm.h"
#include "app/services/modError.h"
#include "app/shell/StartUp.h"
#include "app/shell/modMenu.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "desktop/modHotKeys.h"
#include "desktop/modTrans.h"
#include "os/Dialog.h"

namespace {
// Of the menu's icons, the one that stands for the program.
constexpr std::int32_t kProgramIcon = 0;
}  // namespace

frmMain::frmMain() {
    SetErrorReporter(modError::ReportError);
    SetSessionHooks(&features_);
    os::SetDialogOwner(window_.Handle());
    modSocket::SetListener(&wsWinsock_);
    wsWinsock_.ConnectionRequest.Bind<&frmMain::wsWinsock_ConnectionRequest>(*this);
    tmrTrans_.Tick.Bind<&frmMain::tmrTrans_Tick>(*this);
    hotKey_.HotKeyPress.Bind<&frmMain::m_cHotKey_HotKeyPress>(*this);
    modMenu::CloseChosen().Bind<&frmMain::modMenu_CloseChosen>(*this);
    modHotKeys::ShutDownRequest.Bind<&frmMain::modHotKeys_ShutDownRequest>(*this);
    window_.EndSession.Bind<&frmMain::window_EndSession>(*this);
    window_.CloseRequested.Bind<&frmMain::window_CloseRequested>(*this);
}

frmMain::~frmMain() {
    modMenu::CloseChosen().Reset();
    modHotKeys::ShutDownRequest.Reset();
    modHotKeys::ReleaseHotKeys();
    modSocket::InitWs();
    modSocket::SetListener(nullptr);
    SetSessionHooks(nullptr);
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
    frmSysTray_ = modMenu::BuildTrayMenu(hWnd(), imageList1_.Icon(kProgramIcon), imageList1_);
    frmSysTray_->SysTrayMouseDown.Bind<&frmMain::m_frmSysTray_SysTrayMouseDown>(*this);
    frmSysTray_->MenuClick.Bind<&frmMain::m_frmSysTray_MenuClick>(*this);
}

void frmMain::Unload(bool bAsk) {
    if (std::exchange(unloaded_, true)) return;
    Form_QueryUnload();
    Form_Unload(bAsk);
}

// Never cancelled, whatever the reason.
void frmMain::Form_QueryUnload() {
    frmSysTray_.reset();
}

void frmMain::Form_Unload(bool bAsk) {
    tmrTrans_.Stop();
    wsWinsock_.Close();
    Trap("modSystem:ShutDown", [&] { modSystem::ShutDown(bAsk); });
    os::QuitEventLoop(0);
}

void frmMain::wsWinsock_ConnectionRequest(std::int32_t requestID) {
    modSocket::NewLocalConnection(requestID);
    modSocket::WinsockStartListen();
}

void frmMain::tmrTrans_Tick() {
    modTrans::TimerTick();
}

void frmMain::m_cHotKey_HotKeyPress(const std::string& sName, std::uint32_t, std::uint32_t,
                                    const std::string& sText) {
    modHotKeys::RunHotKeyAction(sName, sText);
}

void frmMain::m_frmSysTray_SysTrayMouseDown(std::int32_t eButton) {
    constexpr std::int32_t kRightButton = 2;
    if (eButton == kRightButton) frmSysTray_->ShowMenu();
}

void frmMain::m_frmSysTray_MenuClick(std::int32_t, const std::string& sKey) {
    modMenu::DoMenuCommand(sKey);
}

void frmMain::modMenu_CloseChosen() {
    Unload(true);
}
void frmMain::modHotKeys_ShutDownRequest() {
    Unload(false);
}

// Windows ends us soon after this returns: everything is done here and nothing is left for the loop.
void frmMain::window_EndSession(bool ending) {
    if (ending) Unload(false);
}
void frmMain::window_CloseRequested() {
    Unload(true);
}
