// WideText: texts as Windows takes them, for its functions on wide characters.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace os {

// Of bytes in CP_ACP or CP_UTF8. What is no character there becomes one that stands for it.
std::wstring WideOf(UINT codePage, std::string_view bytes);

// The reverse; a character that the code page lacks becomes "?", or with `bestFit` a similar one if there is
// one. `lossy` learns whether one was missing.
std::string BytesOf(UINT codePage, std::wstring_view wide, bool bestFit = false, bool* lossy = nullptr);

}  // namespace os
