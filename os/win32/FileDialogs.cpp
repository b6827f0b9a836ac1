#include "os/desktop/FileDialogs.h"

#include <windows.h>

#include <commdlg.h>

#include "os/win32/DialogMessages.h"
#include "os/win32/WidePath.h"
#include "os/win32/WideText.h"

namespace os {

namespace {

// What both dialogs have in common; `ask` is the system's function, `end` without its dot.
std::optional<Path> Ask(BOOL(WINAPI* ask)(OPENFILENAMEW*), DWORD flags, WindowHandle owner,
                        const std::string& title, const Path& proposedName, const std::string& kind,
                        const std::string& end) {
    wchar_t path[MAX_PATH] = {};
    Wide(proposedName).copy(path, MAX_PATH - 1);
    const auto wideTitle = WideOf(CP_ACP, title);
    const auto wideEnd = WideOf(CP_ACP, end);
    // Pairs of what is shown and a pattern, each with a zero behind it.
    const auto pattern = L"*." + wideEnd;
    std::wstring filter = WideOf(CP_ACP, kind) + L" (" + pattern + L")" + L'\0' + pattern + L'\0';
    filter.append(L"All files (*.*)").append(1, L'\0').append(L"*.*").append(2, L'\0');
    OPENFILENAMEW request = {};
    request.lStructSize = sizeof request;
    request.hwndOwner = reinterpret_cast<HWND>(owner);
    request.lpstrFilter = filter.c_str();
    request.lpstrDefExt = wideEnd.c_str();
    request.lpstrFile = path;
    request.nMaxFile = MAX_PATH;
    request.lpstrTitle = wideTitle.c_str();
    request.Flags = flags | OFN_EXPLORER | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    const ForeignDialogLoop loop;
    if (!ask(&request)) return std::nullopt;
    return FromWide(path);
}

}  // namespace

std::optional<Path> AskSaveFileName(WindowHandle owner, const std::string& title, const Path& proposedName,
                                    const std::string& kind) {
    const auto name = proposedName.Shown();
    const auto end = name.substr(name.find_last_of('.') + 1);
    return Ask(GetSaveFileNameW, OFN_OVERWRITEPROMPT, owner, title, proposedName, kind, end);
}

std::optional<Path> AskOpenFileName(WindowHandle owner, const std::string& title, const std::string& kind,
                                    const std::string& end) {
    return Ask(GetOpenFileNameW, OFN_FILEMUSTEXIST, owner, title, {}, kind, end.substr(1));
}

}  // namespace os
