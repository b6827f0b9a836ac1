// fSysTrayIconMenu: the tray icon's host. It owns the icon in the notification area and the popup menu, turns
// the icon's mouse messages into notifications, and reports the chosen menu entry by its key.
//
// The record that it keeps is the system's first form of NOTIFYICONDATA; no newer behaviour is asked for, so
// that the raw mouse messages arrive.
#pragma once

#include <cstdint>
#include <string>

#include "base/Event.h"
#include "net/EventLoop.h"
#include "os/desktop/Tray.h"
#include "os/desktop/WindowHandle.h"
#include "ui/popupmenu/cPopupMenu.h"

class fSysTrayIconMenu {
 public:
    // Mouse buttons: 1 left, 2 right.
    Event<std::int32_t> SysTrayMouseDown;
    Event<std::int32_t> SysTrayMouseUp;
    Event<> SysTrayMouseMove;
    Event<std::int32_t> SysTrayDoubleClick;
    // An entry was chosen; the menu has closed. The handler may destroy the host.
    Event<std::int32_t, const std::string&> MenuClick;

    // The icon's identifier, the same at every start: by program and identifier the system remembers whether
    // the user wants to see the icon always.
    static constexpr std::uint32_t kIconId = 1;
    // The flags that the record carries: message (1), icon (2), tip (4), and 0x10, which says nothing in a
    // record of the first form.
    static constexpr std::uint32_t kRecordFlags = 0x17;
    // The callback message has the number of the mouse-move message.
    static constexpr std::uint32_t kCallbackMessage = 0x200;

    // While there is no taskbar, adding the icon is tried again this often and for so long; after that the
    // icon waits for the taskbar's own announcement.
    static constexpr std::int64_t kRetryMs = 2'000;
    static constexpr int kRetries = 150;

    fSysTrayIconMenu() = default;
    ~fSysTrayIconMenu();
    fSysTrayIconMenu(const fSysTrayIconMenu&) = delete;
    fSysTrayIconMenu& operator=(const fSysTrayIconMenu&) = delete;

    // Adds the icon, with the host window's own picture and the program's description as tip. The owner is
    // brought to the foreground when the menu opens.
    void Initialise(os::WindowHandle hWndOwner);

    // What the notification area was told last, or will be told when there is one.
    const os::TrayRecord& Record() const { return record_; }

    std::string ToolTip() const { return record_.tip.data(); }
    // At most 63 characters are shown.
    void ToolTip(const std::string& text);
    os::IconHandle IconHandle() const { return record_.icon; }
    // Another icon than the window's own; 0 for that one again.
    void IconHandle(os::IconHandle icon);
    // The icons of the menu; must outlive the host.
    void ImageList(::ImageList* images) { menu_.ImageList(images); }
    cPopupMenu& PopupMenuObject() { return menu_; }

    // As the menu's own operations, which say more (ui/popupmenu/cPopupMenu.h).
    std::int32_t AddMenuItem(const std::string& sCaption, const std::string& sKey = {}, bool bDefault = false,
                             std::int32_t lItemData = 0, std::int32_t lParentIndex = 0,
                             std::int32_t lIconIndex = cPopupMenu::kNoIcon, bool bChecked = false,
                             bool bEnabled = true);
    void EnableMenuItem(std::int32_t lIndex, bool bEnabled) { menu_.Enabled(lIndex, bEnabled); }
    void RemoveMenuItem(std::int32_t lIndex) { menu_.RemoveMenuItem(lIndex); }
    bool Default(std::int32_t lIndex) const { return menu_.Default(lIndex); }
    void Default(std::int32_t lIndex, bool bDefault) { menu_.Default(lIndex, bDefault); }
    bool Checked(std::int32_t lIndex) const { return menu_.Checked(lIndex); }
    void Checked(std::int32_t lIndex, bool bChecked) { menu_.Checked(lIndex, bChecked); }

    // Shows the menu at the cursor, waits, and raises MenuClick when an entry was chosen. Does nothing while
    // the menu is open already: events arrive meanwhile, another press of the button among them.
    void ShowMenu();

    // Removes the icon; the destructor does it too.
    void Form_QueryUnload();

 private:
    void window_Callback(std::uint32_t message);
    void window_TaskbarCreated();
    void retry_Tick();
    void AddIcon();
    void ChooseIcon();

    os::TrayWindow window_;
    net::Timer retry_;
    int retriesLeft_ = 0;
    os::TrayRecord record_;
    os::IconHandle givenIcon_ = 0;
    os::WindowHandle owner_ = 0;
    cPopupMenu menu_;
    struct OpenMenu;
    OpenMenu* open_ = nullptr;  // while the menu is on the screen
};
