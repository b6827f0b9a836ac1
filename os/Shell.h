// Shell: what the desktop does for us with other programs.
#pragma once

#include <string>

#include "os/WindowHandle.h"

namespace os {

// Opens a web page in the default browser; `owner` gets the system's messages about it. Only addresses that
// begin with http:// or https:// are opened: anything else could start a program. Whether the system took it.
bool OpenWebPage(WindowHandle owner, const std::string& address);

// How the program file describes itself to the desktop (the file description of its version resource); the
// program's name when it does not.
std::string ProgramDescription();

}  // namespace os
