#include "sandbox/aim/Settings.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>

namespace {

constexpr char kProxyKey[] = "software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";

std::string FromIni(const char* name) {
    char text[256] = "";
    GetPrivateProfileStringA("aim", name, "", text, sizeof text, FileBesideUs("aim.ini").c_str());
    return text;
}

std::string RegistryBytes(const char* name, DWORD wantedType) {
    char data[256] = "";
    DWORD size = sizeof data, type = 0;
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kProxyKey, 0, KEY_READ, &key) != ERROR_SUCCESS) return {};
    const auto result = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS && type == wantedType ? std::string(data, size) : std::string();
}

std::string RegistryText(const char* name) {
    return RegistryBytes(name, REG_SZ).c_str();  // up to the zero that is stored with it
}

std::uint32_t RegistryNumber(const char* name) {
    std::uint32_t number = 0;
    const auto bytes = RegistryBytes(name, REG_DWORD);
    for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8 | static_cast<std::uint8_t>(bytes[i]);
    return number;
}

}  // namespace

// By way of the current folder, because our folder's name may be beyond the code page.
std::string FileBesideUs(const std::string& name) {
    wchar_t path[MAX_PATH + 1] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring own = path;
    SetCurrentDirectoryW(own.substr(0, own.find_last_of(L"\\/") + 1).c_str());
    return ".\\" + name;
}

std::string ScreenName() {
    return FromIni("Name");
}

std::string Way() {
    if (RegistryNumber("Enabled") == 0) return "directly";
    if (const auto protocol = RegistryText("Protocol"); protocol != "SOCKS4") return "by " + protocol;
    return "through " + RegistryText("Host") + ":" + std::to_string(RegistryNumber("Port"));
}

void Log(const std::string& line) {
    std::FILE* const file = std::fopen(FileBesideUs("aim.log").c_str(), "ab");
    if (file == nullptr) return;
    std::fprintf(file, "%lu %s\n", GetCurrentProcessId(), line.c_str());
    std::fclose(file);
}
