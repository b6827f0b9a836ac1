// Unicode: characters as numbers, in UTF-8 (RFC 3629), in UCS-2 and in Windows-1252. Which of them the
// program's texts are in is the system's business (os/CodePage.h).
#pragma once

#include <optional>
#include <string>
#include <string_view>

// What a file may begin with to say that it is UTF-8.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Appends the character; half a surrogate pair is none and becomes U+FFFD.
void AppendUtf8(std::string& utf8, char32_t character);

// Takes the next character off the front; nothing for a byte that begins none, which is taken, too.
std::optional<char32_t> TakeUtf8(std::string_view& utf8);

bool IsUtf8(std::string_view bytes);

// The five bytes without a character stand for the control of their number, as Windows converts them.
char32_t FromWindows1252(char byte);
std::optional<char> ToWindows1252(char32_t character);

// UTF-8 as it stands; other bytes are read as Windows-1252.
std::string AsUtf8(std::string_view bytes);

// Big-endian 16-bit units; what needs two of them becomes a surrogate pair, as clients have it.
void AppendUcs2(std::string& ucs2, char32_t character);
