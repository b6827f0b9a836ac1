// The system's last error as a number with its text, and as an exception.
#pragma once

#include <windows.h>

#include <string>

#include "base/RuntimeError.h"

namespace os {

// The system's text for an error number as it stands, with its line break; our own for a socket's error that
// the system has none for, as Wine; else empty.
std::string SystemErrorText(DWORD number);

// The same without it, to be put into sentences and lines.
inline std::string SystemErrorLine(DWORD number) {
    auto text = SystemErrorText(number);
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

[[noreturn]] inline void ThrowSystemError(DWORD number) {
    throw RuntimeError(static_cast<std::int32_t>(number), SystemErrorLine(number));
}
[[noreturn]] inline void ThrowLastError() {
    ThrowSystemError(GetLastError());
}

}  // namespace os
