// Ucs2: texts whose characters have two bytes, the high one first: how clients send what is not ASCII.
#pragma once

#include <string>
#include <string_view>

namespace wire {

// The text as the program holds texts (os/CodePage.h); what that lacks becomes a numeric entity such as
// "&#1046;", which HTML allows anywhere. Surrogates are joined though UCS-2 has none: clients send the UTF-16
// of their system. Half a pair reads as U+FFFD, half a character is left out.
std::string TextFromUcs2(std::string_view bytes);

// The same in UTF-8, which lacks nothing.
std::string Utf8FromUcs2(std::string_view bytes);
// A text of the program in UTF-8; entities of characters that the code page lacks become these.
std::string Utf8OfText(std::string_view text);

// ASCII text as UCS-2.
std::string Ucs2FromAscii(std::string_view text);

}  // namespace wire
