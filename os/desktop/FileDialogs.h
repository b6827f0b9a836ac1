// FileDialogs: the system's dialogs that ask where to save a file, and which to open.
//
// Like a message box it pumps messages while it is open: see os/desktop/MessageBox.h for what that means to
// callers.
#pragma once

#include <optional>
#include <string>

#include "os/Path.h"
#include "os/desktop/WindowHandle.h"

namespace os {

// Asks for a place to save a file of the proposed name (a bare file name); `owner` cannot be used meanwhile.
// An existing file is only returned after the user has agreed to replace it. Nothing on Cancel, also when
// the dialog cannot be shown. The current folder of the process stays as it is. Files that end as the
// proposed name are offered as files of this kind ("Programs"), and a name without an end gets that one.
std::optional<Path> AskSaveFileName(WindowHandle owner, const std::string& title, const Path& proposedName,
                                    const std::string& kind);

// Asks for a file that is there, of a kind ("Buddy lists") that ends so (".txt"); otherwise as above.
std::optional<Path> AskOpenFileName(WindowHandle owner, const std::string& title, const std::string& kind,
                                    const std::string& end);

}  // namespace os
