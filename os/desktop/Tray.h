// Tray: an icon in the taskbar's notification area, and the hidden window that owns it.
//
// The window is a top-level one, because the taskbar's announcement goes to those only. An icon is added,
// changed and removed by one record; the operations report success instead of throwing, since there may be no
// taskbar yet, or for a moment none.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "base/Event.h"
#include "os/desktop/Icons.h"

namespace os {

inline constexpr std::size_t kTrayTipLength = 64;  // its terminating zero included

// The parts of the system's record (NOTIFYICONDATA, first form) that are not the window's own business.
struct TrayRecord {
    std::uint32_t id = 0;
    std::uint32_t flags = 0;            // NIF_...
    std::uint32_t callbackMessage = 0;  // the window message that reports the mouse
    IconHandle icon = 0;
    std::array<char, kTrayTipLength> tip{};  // ANSI text and a zero
};

class TrayWindow {
 public:
    // The icon's callback message has come. Its horizontal coordinate, which carries the number of a mouse
    // message. The handler may destroy the window.
    Event<std::uint32_t> Callback;
    // The taskbar has been made (anew): it knows none of the icons from before. Windows 10 says the same when
    // the first screen gets another scale ("Taskbar Creation Notification" in its documentation).
    Event<> TaskbarCreated;

    TrayWindow();
    ~TrayWindow();  // as Remove()
    TrayWindow(const TrayWindow&) = delete;
    TrayWindow& operator=(const TrayWindow&) = delete;

    // The window's own icon, which is the program's, in the size that the notification area has now. Valid
    // until it is asked for again.
    IconHandle OwnIcon();

    bool Add(const TrayRecord& record);
    // Changes the icon that was added under the record's id.
    bool Modify(const TrayRecord& record);
    // Removes what was added last. Idempotent.
    void Remove();

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace os
