#include "os/fake/FakeForeground.h"

#include "os/fake/FakeLoop.h"

namespace os {
namespace {

WindowHandle foreground = 0;
const fake::WorldPart part([] { foreground = 0; });

}  // namespace

void BringToForeground(WindowHandle window) {
    foreground = window;
}

WindowHandle fake::ForegroundWindow() {
    return foreground;
}

}  // namespace os
