#include "app/services/SafeFileName.h"

#include <algorithm>
#include <array>

#include "base/Text.h"

namespace {

constexpr std::size_t kMaxName = 64;

bool IsForbidden(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos;
}

// See "Naming Files, Paths, and Namespaces" (Microsoft Learn). The superscript digits of the code page count
// as digits there.
bool IsDevice(std::string_view name) {
    constexpr std::array<std::string_view, 7> kDevices = {"con",    "prn",     "aux",   "nul",
                                                          "conin$", "conout$", "clock$"};
    constexpr std::string_view kPortDigits = "123456789\xB9\xB2\xB3";

    const auto base = LowerCase(TrimEnd(name.substr(0, name.find('.')), " "));
    if (std::find(kDevices.begin(), kDevices.end(), base) != kDevices.end()) return true;
    const auto port = std::string_view(base).substr(0, 3);
    return base.size() == 4 && (port == "com" || port == "lpt") &&
           kPortDigits.find(base[3]) != std::string_view::npos;
}

}  // namespace

std::string SafeFileName(std::string_view name) {
    std::string safe(name.substr(0, kMaxName));
    std::replace_if(safe.begin(), safe.end(), IsForbidden, '_');
    const auto tail = safe.find_last_not_of(". ") + 1;
    std::replace(safe.begin() + static_cast<std::ptrdiff_t>(tail), safe.end(), '.', '_');
    return IsDevice(safe) ? "_" : safe;
}
