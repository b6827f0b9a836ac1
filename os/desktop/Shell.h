// Shell: what the desktop does for us with other programs.
#pragma once

#include <string>

#include "os/Path.h"
#include "os/desktop/WindowHandle.h"

namespace os {

// Opens a web page in the default browser; `owner` gets the system's messages about it. Only addresses that
// begin with http:// or https:// are opened: anything else could start a program. Whether the system took it.
bool OpenWebPage(WindowHandle owner, const std::string& address);

// Opens a file with the program that the user has for files of its kind: only for files of our own, of kinds
// that do not run. Whether the system took it.
bool OpenDocument(WindowHandle owner, const Path& file);

// The same, to be printed by that program.
bool PrintDocument(WindowHandle owner, const Path& file);

// Puts a text in UTF-8 on the clipboard; its lines are separated by CR LF. Whether it is there: another
// program may hold the clipboard.
bool CopyText(WindowHandle owner, const std::string& text);

// How the program file describes itself to the desktop (the file description of its version resource); the
// program's name when it does not.
std::string ProgramDescription();

}  // namespace os
