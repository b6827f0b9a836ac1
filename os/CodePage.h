// CodePage: from Unicode to the code page in which the program's texts stand (see os/Files.h): the ANSI code
// page on Windows, Windows-1252 natively.
#pragma once

#include <string>

namespace os {

// The character's bytes, as many as the code page needs; "" when the code page lacks the character: a
// similar one is never put in its place. Half a surrogate pair is no character.
std::string EncodeInCodePage(char32_t character);

}  // namespace os
