#include "os/fake/FakeShell.h"

#include "os/Shell.h"
#include "os/fake/FakeLoop.h"

namespace os {
namespace {

std::vector<std::string>& Opened() {
    static std::vector<std::string> opened;
    return opened;
}

}  // namespace

bool OpenWebPage(WindowHandle, const std::string& address) {
    if (!address.starts_with("http://") && !address.starts_with("https://")) return false;
    Opened().push_back(address);
    return true;
}

std::string ProgramDescription() {
    return "Wrenlow, the program under test";
}

namespace fake {

const std::vector<std::string>& OpenedPages() {
    return Opened();
}

void ResetShell() {
    Opened().clear();
}
const WorldPart part(ResetShell);

}  // namespace fake
}  // namespace os
