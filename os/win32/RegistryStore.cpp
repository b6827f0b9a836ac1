#include "os/RegistryStore.h"

#include <windows.h>

#include <utility>

#include "os/win32/WidePath.h"

namespace os {
namespace {

constexpr REGSAM kAccess = 0x2003F;  // read and write everything below the key

class Key {
 public:
    Key() = default;
    ~Key() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    bool Open(RegistryHive hive, const std::string& path) {
        return RegOpenKeyExA(Root(hive), path.c_str(), 0, kAccess, &key_) == ERROR_SUCCESS;
    }
    // The class of a new key is the type of its first value, as decimal text.
    bool Create(RegistryHive hive, const std::string& path, std::uint32_t type) {
        auto keyClass = std::to_string(type);
        return RegCreateKeyExA(Root(hive), path.c_str(), 0, keyClass.data(), REG_OPTION_NON_VOLATILE, kAccess,
                               nullptr, &key_, nullptr) == ERROR_SUCCESS;
    }
    HKEY Get() const { return key_; }

 private:
    static HKEY Root(RegistryHive hive) {
        // The predefined handles are small negative numbers in the width of a pointer.
        return reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<std::int32_t>(hive)));
    }

    HKEY key_ = nullptr;
};

std::string WithoutEnd(const std::string& path) {
    const auto last = path.find_last_not_of('\\');
    return last == std::string::npos ? std::string() : path.substr(0, last + 1);
}

}  // namespace

std::optional<RegistryValue> ReadRegistryValue(RegistryHive hive, const std::string& keyPath,
                                               const std::string& name, std::size_t maxBytes) {
    Key key;
    if (!key.Open(hive, WithoutEnd(keyPath))) return {};
    RegistryValue value{0, std::string(maxBytes + 1, '\0')};  // one for a zero at the end of a text
    DWORD type = 0;
    auto size = static_cast<DWORD>(value.data.size());
    if (RegQueryValueExA(key.Get(), name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(value.data.data()),
                         &size) != ERROR_SUCCESS) {
        return {};
    }
    value.type = type;
    value.data.resize(size);
    return AsRead(std::move(value), maxBytes);
}

bool WriteRegistryValue(RegistryHive hive, const std::string& keyPath, const std::string& name,
                        std::uint32_t type, std::string_view data) {
    Key key;
    return key.Create(hive, WithoutEnd(keyPath), type) &&
           RegSetValueExA(key.Get(), name.c_str(), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                          static_cast<DWORD>(data.size())) == ERROR_SUCCESS;
}

Path ReadRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name) {
    Key key;
    if (!key.Open(hive, WithoutEnd(keyPath))) return {};
    wchar_t wide[MAX_PATH + 1] = {};  // one for a zero at the end
    DWORD type = 0;
    DWORD size = sizeof wide;
    if (RegQueryValueExW(key.Get(), Wide(Path::FromText(name)).c_str(), nullptr, &type,
                         reinterpret_cast<BYTE*>(wide), &size) != ERROR_SUCCESS ||
        type != RegistryType::String) {
        return {};
    }
    const std::wstring_view path(wide, size / sizeof *wide);
    return FromWide(path.substr(0, path.find(L'\0')));
}

bool WriteRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name,
                       const Path& path) {
    Key key;
    const auto wide = Wide(path);
    return key.Create(hive, WithoutEnd(keyPath), RegistryType::String) &&
           RegSetValueExW(key.Get(), Wide(Path::FromText(name)).c_str(), 0, RegistryType::String,
                          reinterpret_cast<const BYTE*>(wide.c_str()),
                          static_cast<DWORD>((wide.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool RemoveRegistryValue(RegistryHive hive, const std::string& keyPath, const std::string& name) {
    Key key;
    return key.Create(hive, WithoutEnd(keyPath), RegistryType::String) &&
           RegDeleteValueA(key.Get(), name.c_str()) == ERROR_SUCCESS;
}

}  // namespace os
