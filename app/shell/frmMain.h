// frmMain: the hidden main form. It owns the listener, the translucency timer, the menu's icons, the tray
// host and the hotkeys, and turns their notifications into calls of the modules. Modules below it get from it
// what they need at start-up; they never reach up.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "app/shell/fSysTrayIconMenu.h"
#include "desktop/cRegHotKey.h"
#include "features/clsSessionFeatures.h"
#include "os/EventLoop.h"
#include "os/MainWindow.h"
#include "os/Tcp.h"
#include "ui/popupmenu/ImageList.h"

class frmMain {
 public:
    frmMain();
    ~frmMain();
    frmMain(const frmMain&) = delete;
    frmMain& operator=(const frmMain&) = delete;

    // Starts the program.
    void Form_Load();
    bool IsUnloaded() const { return unloaded_; }

    // For start-up.
    void ShowTrayIcon();
    os::WindowHandle hWnd() const { return window_.Handle(); }
    cRegHotKey& m_cHotKey() { return hotKey_; }

 private:
    // Ends the program, once.
    void Unload(bool bAsk);
    void Form_QueryUnload();
    void Form_Unload(bool bAsk);

    void wsWinsock_ConnectionRequest(std::int32_t requestID);
    void tmrTrans_Tick();
    void m_cHotKey_HotKeyPress(const std::string& sName, std::uint32_t eModifiers, std::uint32_t eKey,
                               const std::string& sText);
    void m_frmSysTray_SysTrayMouseDown(std::int32_t eButton);
    void m_frmSysTray_MenuClick(std::int32_t lIndex, const std::string& sKey);
    void modMenu_CloseChosen();
    void modHotKeys_ShutDownRequest();
    void window_EndSession(bool ending);
    void window_CloseRequested();

    os::MainWindow window_{"Wrenlow"};
    os::TcpListener wsWinsock_;
    os::Timer tmrTrans_;
    ImageList imageList1_;
    std::unique_ptr<fSysTrayIconMenu> frmSysTray_;
    cRegHotKey hotKey_;
    clsSessionFeatures features_;
    bool unloaded_ = false;
};
