// FakeShell: the web pages that the program under test opens.
#pragma once

#include <string>
#include <vector>

namespace os::fake {

// Addresses since the last reset that OpenWebPage took, oldest first.
const std::vector<std::string>& OpenedPages();

void ResetShell();

}  // namespace os::fake
