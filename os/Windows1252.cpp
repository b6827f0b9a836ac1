#include "os/Windows1252.h"

#include "os/CodePage.h"

// Only the bytes from 0x80 to 0x9F stand for other numbers than their own.
std::string os::EncodeInCodePage(char32_t character) {
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) return {static_cast<char>(character)};
    for (unsigned char byte = 0x80; byte < 0xA0; ++byte) {
        if (UnicodeOfWindows1252(byte) == character) return {static_cast<char>(byte)};
    }
    return {};
}
