#include "os/desktop/CommandLine.h"

#include <windows.h>

#include <algorithm>
#include <string_view>

std::string os::CommandLineArguments() {
    std::string_view line = GetCommandLineA();
    // The name ends at the closing quote or at the first blank; there are no escapes in it.
    const bool quoted = line.starts_with('"');
    const auto end = quoted ? line.find('"', 1) : line.find_first_of(" \t");
    line.remove_prefix(std::min(end == std::string_view::npos ? end : end + 1, line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    return std::string(line);
}
