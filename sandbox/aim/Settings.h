// What the stand-in is told: by the real client's registry key where its proxy is, and by "aim.ini" beside
// its program file who it is. A copy of the program in a folder of its own is a
// client of its own; what it does stands in "aim.log" in the same folder.
#pragma once

#include <string>

// The file beside the program file.
std::string FileBesideUs(const std::string& name);

// From the section [aim]: Name.
std::string ScreenName();

// How the user has set it to connect: "directly", "through HOST:PORT" for SOCKS4, or with another protocol's
// name. Read at the start, as the real client does: a change shows after its next one.
std::string Way();

// Appends a line to the log.
void Log(const std::string& line);
