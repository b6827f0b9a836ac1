#include "os/CodePage.h"

#include <utility>

#include "base/Unicode.h"
#include "os/win32/WideText.h"

namespace os {

std::string EncodeInCodePage(char32_t character) {
    if (character >= 0xD800 && character < 0xE000) return {};
    std::string utf8;
    AppendUtf8(utf8, character);
    bool lossy = false;
    auto bytes = BytesOf(CP_ACP, WideOf(CP_UTF8, utf8), false, &lossy);
    return lossy ? std::string() : bytes;
}

std::string TextFromBytes(std::string bytes) {
    return bytes;
}

std::string Utf8FromText(std::string bytes) {
    if (bytes.starts_with(kUtf8Mark)) return bytes.substr(kUtf8Mark.size());
    return BytesOf(CP_UTF8, WideOf(CP_ACP, bytes));
}

WireText TextForWire(std::string text) {
    return {std::move(text)};
}

}  // namespace os
