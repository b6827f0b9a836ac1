// frmMain: the hidden main form. It owns the relay, the translucency timer, the menu's icons, the tray
// host and the hotkeys, and turns their notifications into calls of the modules. Modules below it get from it
// what they need at start-up; they never reach up.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "app/shell/fSysTrayIconMenu.h"
#include "core/Relay.h"
#include "desktop/cRegHotKey.h"
#include "features/Overview.h"
#include "net/EventLoop.h"
#include "os/desktop/MainWindow.h"
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

    static constexpr std::int64_t kListenAgainMs = 2'000;
    static constexpr int kListenTries = 30;

    // For start-up.
    void ShowTrayIcon();
    // Listens, or tries to for a minute: the port may linger after a restart of the system's services. What
    // is in the way then is reported.
    void StartListening();
    os::WindowHandle hWnd() const { return window_.Handle(); }
    cRegHotKey& m_cHotKey() { return hotKey_; }

 private:
    // Ends the program, once.
    void Unload(bool bAsk);
    void Form_QueryUnload();
    void Form_Unload(bool bAsk);

    void tmrTrans_Tick();
    void tmrListen_Tick();
    void ShowNamesInTip();
    void m_cHotKey_HotKeyPress(const std::string& sName, std::uint32_t eModifiers, std::uint32_t eKey,
                               const std::string& sText);
    void m_frmSysTray_SysTrayMouseDown(std::int32_t eButton);
    void m_frmSysTray_SysTrayDoubleClick(std::int32_t eButton);
    void m_frmSysTray_MenuClick(std::int32_t lIndex, const std::string& sKey);
    void modSystem_EndRequest(bool bAsk);
    void window_EndSession(bool ending);
    void window_CloseRequested();

    os::MainWindow window_{"Wrenlow"};
    Relay relay_;
    Overview overview_{relay_};
    net::Timer tmrTrans_;
    net::Timer tmrListen_;
    int listenTriesLeft_ = 0;
    ImageList imageList1_;
    std::unique_ptr<fSysTrayIconMenu> frmSysTray_;
    cRegHotKey hotKey_;
    bool unloaded_ = false;
};
