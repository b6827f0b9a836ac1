#include "os/Windows1252.h"

#include "os/CodePage.h"

std::string os::EncodeInCodePage(char32_t character) {
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        const auto candidate = static_cast<unsigned char>(byte);
        if (UnicodeOfWindows1252(candidate) == character) return {static_cast<char>(candidate)};
    }
    return {};
}
