// FakeTopWindows: other programs' windows, made and looked at by tests.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "os/TopWindows.h"

namespace os::fake {

struct TopWindow {
    std::string title;
    std::optional<std::uint8_t> alpha;  // nothing while the window is an ordinary one
    int translucentCalls = 0;
    int opaqueCalls = 0;
    bool visible = true;
    bool minimized = false;
};

// A new window on top of the others; its number is never used again.
WindowHandle OpenTopWindow(const std::string& title);

// A window as it stands, to look at and to change. It must exist.
TopWindow& TopWindowAt(WindowHandle window);

void CloseTopWindow(WindowHandle window);

// How often the windows have been enumerated since the last reset.
int Enumerations();

void SetCanMakeTranslucent(bool can);

}  // namespace os::fake
