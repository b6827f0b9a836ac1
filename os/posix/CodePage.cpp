#include "os/CodePage.h"

#include <utility>

#include "base/Unicode.h"

namespace os {

std::string EncodeInCodePage(char32_t character) {
    std::string utf8;
    if (character < 0xD800 || character >= 0xE000) AppendUtf8(utf8, character);
    return utf8;
}

std::string TextFromBytes(std::string bytes) {
    return AsUtf8(bytes);
}

std::string Utf8FromText(std::string bytes) {
    if (bytes.starts_with(kUtf8Mark)) bytes.erase(0, kUtf8Mark.size());
    return IsUtf8(bytes) ? std::move(bytes) : AsUtf8(bytes);
}

WireText TextForWire(std::string text) {
    WireText single;
    WireText wide{{}, true};
    const auto utf8 = AsUtf8(text);
    for (std::string_view rest = utf8; !rest.empty();) {
        const auto character = *TakeUtf8(rest);
        const auto byte = ToWindows1252(character);
        AppendUcs2(wide.bytes, character);
        if (byte) single.bytes += *byte;
        single.isUcs2 = single.isUcs2 || !byte;
    }
    return single.isUcs2 ? wide : single;
}

}  // namespace os
