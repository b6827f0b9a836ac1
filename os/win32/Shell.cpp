#include "os/desktop/Shell.h"

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include <cwchar>
#include <iterator>
#include <vector>

#include "os/desktop/MessageBox.h"
#include "os/win32/WidePath.h"
#include "os/win32/WideText.h"

namespace os {
namespace {

// The version resource of this program's file; empty when it has none.
std::vector<char> VersionResource() {
    const auto path = Wide(ModulePath());
    DWORD unused = 0;
    std::vector<char> resource(GetFileVersionInfoSizeW(path.c_str(), &unused));
    if (resource.empty()) return {};
    if (!GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()))
        return {};
    return resource;
}

bool Open(WindowHandle owner, const std::wstring& what, const wchar_t* verb = L"open") {
    // By its documentation ShellExecute may hand the work to a COM object, so COM must be there.
    static const HRESULT com = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    static_cast<void>(com);  // what refuses COM here is there already
    const auto result =
        ShellExecuteW(reinterpret_cast<HWND>(owner), verb, what.c_str(), L"", L"", SW_SHOWNORMAL);
    // By its documentation a number above 32 is success; the handle type is a relic.
    return reinterpret_cast<INT_PTR>(result) > 32;
}

}  // namespace

bool OpenWebPage(WindowHandle owner, const std::string& address) {
    if (!address.starts_with("http://") && !address.starts_with("https://")) return false;
    return Open(owner, Wide(Path::FromText(address)));
}

bool OpenDocument(WindowHandle owner, const Path& file) {
    return Open(owner, Wide(file));
}

bool PrintDocument(WindowHandle owner, const Path& file) {
    return Open(owner, Wide(file), L"print");
}

bool CopyText(WindowHandle owner, const std::string& text) {
    const auto wide = WideOf(CP_UTF8, text);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, (wide.size() + 1) * sizeof(wchar_t));
    if (memory == nullptr) return false;
    wide.copy(static_cast<wchar_t*>(GlobalLock(memory)), wide.size());
    GlobalUnlock(memory);
    // Programs that watch the clipboard hold it for a moment.
    bool isOpen = false;
    for (int time = 0; time < 5 && !isOpen; ++time) {
        if (time > 0) Sleep(10);
        isOpen = OpenClipboard(reinterpret_cast<HWND>(owner)) != FALSE;
    }
    bool isThere = false;
    if (isOpen) {
        isThere = EmptyClipboard() && SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        CloseClipboard();
    }
    if (!isThere) GlobalFree(memory);  // otherwise it is the clipboard's
    return isThere;
}

std::string ProgramDescription() {
    const auto resource = VersionResource();
    const auto query = [&](const wchar_t* name) -> const wchar_t* {
        void* value = nullptr;
        UINT length = 0;
        if (resource.empty() || !VerQueryValueW(resource.data(), name, &value, &length) || length == 0)
            return nullptr;
        return static_cast<const wchar_t*>(value);
    };
    // The texts stand under the language and the code page of the resource's first translation.
    const auto* translation = query(L"\\VarFileInfo\\Translation");
    if (translation == nullptr) return kApplicationTitle;
    wchar_t name[64];
    std::swprintf(name, std::size(name), L"\\StringFileInfo\\%04X%04X\\FileDescription",
                  unsigned{translation[0]}, unsigned{translation[1]});
    const auto* description = query(name);
    return description != nullptr ? FromWide(description).Shown() : kApplicationTitle;
}

}  // namespace os
