// WidePath: paths as Windows takes them, for its functions on wide characters.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "os/Path.h"

namespace os {

std::wstring Wide(const Path& path);
Path FromWide(std::wstring_view wide);

// The program file of this process.
Path ModulePath();

}  // namespace os
