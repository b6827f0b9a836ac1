// The system's last error as a number with its text, and as an exception.
#pragma once

#include <windows.h>

#include <string>

#include "base/RuntimeError.h"

namespace os {

// The system's text for an error number as it stands, with its line break; empty when there is none.
inline std::string SystemErrorText(DWORD number) {
    char text[256] = {};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        number, 0, text, sizeof text, nullptr);
    return std::string(text, length);
}

// As an exception; its text is put into sentences and lines, so it has no line break.
[[noreturn]] inline void ThrowSystemError(DWORD number) {
    auto text = SystemErrorText(number);
    text.erase(text.find_last_not_of("\r\n") + 1);
    throw RuntimeError(static_cast<std::int32_t>(number), text);
}
[[noreturn]] inline void ThrowLastError() {
    ThrowSystemError(GetLastError());
}

}  // namespace os
