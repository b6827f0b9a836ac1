#include "os/FileDialogs.h"

#include <windows.h>

#include <commdlg.h>

#include <algorithm>

#include "os/win32/ModalLoop.h"

namespace os {

std::optional<std::string> AskSaveFileName(WindowHandle owner, const std::string& title,
                                           const std::string& proposedName) {
    char path[MAX_PATH] = {};
    proposedName.copy(path, std::min<std::size_t>(proposedName.size(), sizeof path - 1));
    OPENFILENAMEA request = {};
    request.lStructSize = sizeof request;
    request.hwndOwner = reinterpret_cast<HWND>(owner);
    request.lpstrFilter = "Programs (*.exe)\0*.exe\0All files (*.*)\0*.*\0";
    request.lpstrFile = path;
    request.nMaxFile = sizeof path;
    request.lpstrTitle = title.c_str();
    request.Flags =
        OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    EnterModalLoop();
    if (!GetSaveFileNameA(&request)) return std::nullopt;
    return std::string(path);
}

}  // namespace os
