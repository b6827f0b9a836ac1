#include "os/CodePage.h"

#include <windows.h>

#include <array>

namespace os {

std::string EncodeInCodePage(char32_t character) {
    std::array<wchar_t, 2> wide = {static_cast<wchar_t>(character), 0};
    int wideCount = 1;
    if (character > 0xFFFF) {
        const auto above = character - 0x10000;
        wide = {static_cast<wchar_t>(0xD800 + (above >> 10)), static_cast<wchar_t>(0xDC00 + (above & 0x3FF))};
        wideCount = 2;
    } else if (character >= 0xD800 && character < 0xE000) {
        return {};
    }
    std::array<char, 8> bytes;
    BOOL replaced = FALSE;
    // With UTF-8 as the code page nothing can be missing, and the system refuses to be asked about it.
    const bool unicode = GetACP() == CP_UTF8;
    const int count =
        WideCharToMultiByte(CP_ACP, unicode ? 0 : WC_NO_BEST_FIT_CHARS, wide.data(), wideCount, bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, unicode ? nullptr : &replaced);
    if (count <= 0 || replaced != FALSE) return {};
    return {bytes.data(), static_cast<std::size_t>(count)};
}

}  // namespace os
