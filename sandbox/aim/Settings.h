// What the stand-in is told: by the real client's registry key where its proxy is, and by "aim.ini" beside
// its program file who it is and where the service is. A copy of the program in a folder of its own is a
// client of its own; what it does stands in "aim.log" in the same folder.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct Address {
    std::string host;  // dotted, as all of the sandbox
    std::uint16_t port = 0;
};

// The file beside the program file.
std::string FileBesideUs(const std::string& name);

// From the section [aim]: Name, ServiceHost, ServicePort.
std::string ScreenName();
Address Service();

// The proxy that the user has set, if it is switched on. Read at each sign-on, as the real client does: a
// change shows after its next start. Throws std::runtime_error for a protocol other than "SOCKS4".
std::optional<Address> Proxy();

// Appends a line to the log.
void Log(const std::string& line);
