// A Windows whose code page is Windows-1252.
#include <utility>

#include "base/Unicode.h"
#include "os/CodePage.h"

namespace os {

std::string EncodeInCodePage(char32_t character) {
    const auto byte = ToWindows1252(character);
    return byte ? std::string(1, *byte) : std::string();
}

std::string TextFromBytes(std::string bytes) {
    return bytes;
}

std::string Utf8FromText(std::string bytes) {
    if (bytes.starts_with(kUtf8Mark)) return bytes.substr(kUtf8Mark.size());
    std::string utf8;
    for (const char byte : bytes) AppendUtf8(utf8, FromWindows1252(byte));
    return utf8;
}

WireText TextForWire(std::string text) {
    return {std::move(text)};
}

}  // namespace os
