// DataFolder: where the program's own files lie (the alias list "repl.dat", the debug files). Beside the
// executable, unless start-up names another folder, as the command line of the native relay can.
#pragma once

#include <string>

// Without a separator at its end.
std::string DataFolder();

// "" puts the folder of the executable back.
void SetDataFolder(std::string folder);
