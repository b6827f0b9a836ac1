#include "os/win32/WideText.h"

namespace os {

std::wstring WideOf(UINT codePage, std::string_view bytes) {
    const auto size = static_cast<int>(bytes.size());
    std::wstring wide(bytes.size(), L'\0');  // never more characters than bytes
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(codePage, 0, bytes.data(), size, wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

// UTF-8 lacks nothing, and the system refuses to be asked about it.
std::string BytesOf(UINT codePage, std::wstring_view wide, bool bestFit, bool* lossy) {
    const bool unicode = codePage == CP_UTF8 || GetACP() == CP_UTF8;
    const DWORD flags = unicode || bestFit ? 0 : WC_NO_BEST_FIT_CHARS;
    BOOL replaced = FALSE;
    std::string bytes(wide.size() * 4, '\0');
    bytes.resize(static_cast<std::size_t>(
        WideCharToMultiByte(codePage, flags, wide.data(), static_cast<int>(wide.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, unicode ? nullptr : &replaced)));
    if (lossy != nullptr) *lossy = replaced != FALSE;
    return bytes;
}

}  // namespace os
