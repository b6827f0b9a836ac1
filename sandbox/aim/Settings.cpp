#include "sandbox/aim/Settings.h"

#include <windows.h>

#include <cstdio>
#include <stdexcept>

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

std::string FileBesideUs(const std::string& name) {
    char path[MAX_PATH + 1] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string own = path;
    return own.substr(0, own.find_last_of("\\/") + 1) + name;
}

std::string ScreenName() {
    return FromIni("Name");
}

Address Service() {
    return {FromIni("ServiceHost"), static_cast<std::uint16_t>(std::atoi(FromIni("ServicePort").c_str()))};
}

std::optional<Address> Proxy() {
    if (RegistryNumber("Enabled") == 0) return {};
    if (const auto protocol = RegistryText("Protocol"); protocol != "SOCKS4")
        throw std::runtime_error("the proxy protocol is \"" + protocol + "\"");
    return Address{RegistryText("Host"), static_cast<std::uint16_t>(RegistryNumber("Port"))};
}

void Log(const std::string& line) {
    std::FILE* const file = std::fopen(FileBesideUs("aim.log").c_str(), "ab");
    if (file == nullptr) return;
    std::fprintf(file, "%lu %s\n", GetCurrentProcessId(), line.c_str());
    std::fclose(file);
}
