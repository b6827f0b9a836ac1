// FakeTopWindows: other programs' windows, made and looked at by tests.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "os/desktop/TopWindows.h"
#include "os/fake/FakeWorld.h"

namespace os::fake {

struct TopWindow {
    std::string title;
    std::optional<std::uint8_t> alpha;  // nothing while the window is an ordinary one
    int translucentCalls = 0;
    int opaqueCalls = 0;
    bool visible = true;
    bool minimized = false;
};

struct TopWindows {
    std::map<WindowHandle, TopWindow> open;  // the one on top is the last
    WindowHandle last = 0x10000;
    int enumerations = 0;
    std::function<void()> duringEnumeration;  // called once, in the middle of the next
    bool canMakeTranslucent = true;
};
inline TopWindows& topWindows = Fresh<TopWindows>();

// A new window on top of the others; its number is never used again.
WindowHandle OpenTopWindow(const std::string& title);

}  // namespace os::fake
