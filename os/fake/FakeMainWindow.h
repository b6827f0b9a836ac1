// FakeMainWindow: the main window and command line of a test.
#pragma once

#include <string>

#include "os/MainWindow.h"

namespace os::fake {

// The window that was made last; nullptr when it is gone.
MainWindow* TheMainWindow();

void SetCommandLineArguments(const std::string& arguments);

}  // namespace os::fake
