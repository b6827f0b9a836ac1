// cRegHotKey: a set of system-wide hotkeys of one window of the program, each under a name of the caller's,
// and the notification when one is pressed.
//
// Failures are raised as RuntimeError with the numbers below; its source is the program's base name followed
// by ".cRegHotKey". A failed registration leaves the instance, and the system's atoms, as they were.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Event.h"
#include "os/desktop/Hotkeys.h"
#include "os/desktop/WindowHandle.h"
#include "os/desktop/WindowHook.h"

class cRegHotKey {
 public:
    static constexpr auto kAtomFailed = static_cast<std::int32_t>(0x8004041Au);
    // The name is too long, or the system refused the combination.
    static constexpr auto kNotRegistered = static_cast<std::int32_t>(0x8004041Bu);
    // The name is taken already, or (UnregisterKey) not known.
    static constexpr auto kWrongName = static_cast<std::int32_t>(0x8004041Cu);

    // A hotkey was pressed: its name, modifiers, virtual-key code and text. Presses that belong to no
    // registered key come as "Desktop Snapshot", "Window Snapshot" and "Unknown HotKey".
    Event<const std::string&, std::uint32_t, std::uint32_t, const std::string&> HotKeyPress;

    cRegHotKey() = default;
    ~cRegHotKey();
    cRegHotKey(const cRegHotKey&) = delete;
    cRegHotKey& operator=(const cRegHotKey&) = delete;

    // Drops every key, then listens to the window's hotkey messages and to its end; 0 attaches to none.
    void Attach(os::WindowHandle hwndA);

    // Drops every key, the last first, and detaches from the window unless `bDontStop` is set.
    void Clear(bool bDontStop = false);

    // Registers a combination under a name of 32 characters at most that no other key has (case matters).
    // `sText` is handed back with every press.
    void RegisterKey(const std::string& sName, std::uint32_t eKey, std::uint32_t eModifiers,
                     const std::string& sText);

    void UnregisterKey(const std::string& sName);

    // Shows a window of ours that is hidden or minimized and brings it to the foreground.
    static void RestoreAndActivate(os::WindowHandle hwnd);

 private:
    struct Entry {
        std::string sName;
        std::string atomText;
        std::int32_t id;  // the atom's 16 bits with their sign, as the system hands it back in wParam
        std::uint32_t key;
        std::uint32_t modifiers;
        std::string sText;
    };

    void hook_Message(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam);
    std::vector<Entry>::iterator Find(const std::string& sName);
    void RaisePress(std::int32_t id, std::uintptr_t lParam) const;

    os::WindowHandle window_ = 0;
    std::unique_ptr<os::WindowHook> hook_;
    std::vector<Entry> keys_;
};
