// SystemText: between the program's texts, Windows-1252 natively as on the Windows program's usual code page,
// and the system's file names and arguments, UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace os::posix {

std::string Utf8FromText(std::string_view text);

// Characters outside Windows-1252, and bytes that are no UTF-8, become "?".
std::string TextFromUtf8(std::string_view utf8);

}  // namespace os::posix
