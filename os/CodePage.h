// CodePage: the character set in which the program's texts stand, in dialogs, settings, files and on the
// wire: the ANSI code page on Windows, UTF-8 natively.
#pragma once

#include <string>
#include <string_view>

namespace os {

// The character's bytes, as many as the code page needs; "" when the code page lacks the character: a
// similar one is never put in its place. Half a surrogate pair is no character.
std::string EncodeInCodePage(char32_t character);

// The text that bytes of no named character set are: on Windows as they stand; natively UTF-8 as it stands,
// and anything else as Windows-1252.
std::string TextFromBytes(std::string bytes);

// A text, as a file may hold it, in UTF-8: behind a byte order mark it is that already (the mark goes). Bytes
// that are no text become characters that stand for them.
std::string Utf8FromText(std::string bytes);

struct WireText {
    std::string bytes;
    bool isUcs2 = false;
};

// An away message or profile for a server, in the single bytes of the western code page where they hold it,
// natively otherwise in UCS-2. On Windows a text is in the code page and leaves as it stands.
WireText TextForWire(std::string text);

}  // namespace os
