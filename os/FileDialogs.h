// FileDialogs: the system's dialog that asks where to save a file.
//
// Like a message box it pumps messages while it is open: see os/MessageBox.h for what that means to callers.
#pragma once

#include <optional>
#include <string>

#include "os/WindowHandle.h"

namespace os {

// Asks for a place to save a file of the proposed name (a bare file name); `owner` cannot be used meanwhile.
// An existing file is only returned after the user has agreed to replace it. Nothing on Cancel, also when
// the dialog cannot be shown. The current folder of the process stays as it is.
std::optional<std::string> AskSaveFileName(WindowHandle owner, const std::string& title,
                                           const std::string& proposedName);

}  // namespace os
