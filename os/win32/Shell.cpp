#include "os/Shell.h"

#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "os/MessageBox.h"

namespace os {
namespace {

// The version resource of this program's file; empty when it has none.
std::vector<char> VersionResource() {
    char path[MAX_PATH];
    if (GetModuleFileNameA(nullptr, path, MAX_PATH) == 0) return {};
    DWORD unused = 0;
    std::vector<char> resource(GetFileVersionInfoSizeA(path, &unused));
    if (resource.empty()) return {};
    if (!GetFileVersionInfoA(path, 0, static_cast<DWORD>(resource.size()), resource.data())) return {};
    return resource;
}

}  // namespace

bool OpenWebPage(WindowHandle owner, const std::string& address) {
    if (!address.starts_with("http://") && !address.starts_with("https://")) return false;
    const auto result =
        ShellExecuteA(reinterpret_cast<HWND>(owner), "open", address.c_str(), "", "", SW_SHOWNORMAL);
    // By its documentation a number above 32 is success; the handle type is a relic.
    return reinterpret_cast<INT_PTR>(result) > 32;
}

std::string ProgramDescription() {
    const auto resource = VersionResource();
    const auto query = [&](const char* name) -> const char* {
        void* value = nullptr;
        UINT length = 0;
        if (resource.empty() || !VerQueryValueA(resource.data(), name, &value, &length) || length == 0)
            return nullptr;
        return static_cast<const char*>(value);
    };
    // The texts stand under the language and the code page of the resource's first translation.
    const auto* translation = query("\\VarFileInfo\\Translation");
    if (translation == nullptr) return kApplicationTitle;
    WORD words[2];
    std::memcpy(words, translation, sizeof words);
    char name[64];
    std::snprintf(name, sizeof name, "\\StringFileInfo\\%04X%04X\\FileDescription", words[0], words[1]);
    const auto* description = query(name);
    return description != nullptr ? description : kApplicationTitle;
}

}  // namespace os
