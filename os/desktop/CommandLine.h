// CommandLine: what the program was started with, for a program with windows.
#pragma once

#include <string>

namespace os {

// Everything after the program's name and the blanks that follow it, as it was written, blanks at the end
// included.
std::string CommandLineArguments();

}  // namespace os
