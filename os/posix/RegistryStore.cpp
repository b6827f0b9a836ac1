#include "os/RegistryStore.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

#include "base/Text.h"
#include "base/Trap.h"
#include "os/SettingsFile.h"
#include "os/posix/FileDescriptor.h"
#include "os/posix/SettingsText.h"

namespace os {
namespace {

using posix::FileDescriptor;

// Larger files are not ours: they are not read, and never written over.
constexpr off_t kMaxFileBytes = 1 << 20;

struct BeforeWithoutCase {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const {
        return std::ranges::lexicographical_compare(a, b, {}, LowerAscii, LowerAscii);
    }
};

using Texts = std::map<std::string, std::string, BeforeWithoutCase>;  // by name

struct Store {
    std::string path;
    std::string topKey;  // without a separator at its end
    Texts overrides;
    Texts defaults;
    std::string lastRead;  // the file's text
    bool isTold = false;   // that the file cannot be read
};

Store& TheStore() {
    static Store store;
    return store;
}

// The name of a value in the file: values of other keys carry the key.
std::string NameOf(std::string_view key, const std::string& name) {
    key = TrimEnd(key, "\\");
    return SameWithoutCase(key, TheStore().topKey) ? name : "\\" + LowerCase(key) + "\\" + name;
}

std::optional<RegistryValue> TextIn(const Texts& texts, const std::string& name) {
    const auto found = texts.find(name);
    if (found == texts.end()) return std::nullopt;
    return RegistryValue{RegistryType::String, found->second};
}

FileDescriptor Open(const std::string& path, int flags, mode_t mode = 0) {
    return FileDescriptor(open(path.c_str(), flags | O_CLOEXEC, mode));
}

// The file's text; "" when there is none. Not blocking, because somebody may have put a pipe there. Throws
// RuntimeError with the system's number.
std::string ReadSettingsFile(const std::string& path) {
    const auto file = Open(path, O_RDONLY | O_NONBLOCK);
    if (!file && errno == ENOENT) return {};
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) posix::ThrowLastError();
    if (S_ISDIR(status.st_mode)) posix::ThrowSystemError(EISDIR);
    if (!S_ISREG(status.st_mode)) throw RuntimeError(EINVAL, "Not a regular file");
    if (status.st_size > kMaxFileBytes) posix::ThrowSystemError(EFBIG);
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        const auto count = read(file.Get(), text.data() + size, text.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) posix::ThrowLastError();
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    text.resize(size);
    return text;
}

// As it is now. While it cannot be read, what was read last counts, and that is reported once.
const std::string& SettingsNow() {
    auto& store = TheStore();
    try {
        store.lastRead = store.path.empty() ? std::string() : ReadSettingsFile(store.path);
        store.isTold = false;
    } catch (const RuntimeError& error) {
        if (!std::exchange(store.isTold, true)) {
            Trap("modRegistry:QueryValue", [&] {
                throw RuntimeError(error.Number(),
                                   "The settings file " + store.path + " cannot be read: " + error.what());
            });
        }
    }
    return store.lastRead;
}

bool WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const auto count = write(file, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return fsync(file) == 0;
}

// Written beside the file and renamed, so that readers see the old text or the new one.
bool ReplaceSettingsFile(const std::string& path, std::string_view text) {
    const auto temporary = path + ".new";
    struct stat old {};
    const mode_t mode = stat(path.c_str(), &old) == 0 ? old.st_mode & 07777 : 0600;
    unlink(temporary.c_str());  // left by a process that was killed; the folder's lock is ours
    bool written = false;
    {
        const auto file = Open(temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
        written = file && WriteAll(file.Get(), text);
    }
    if (written && rename(temporary.c_str(), path.c_str()) == 0) return true;
    unlink(temporary.c_str());
    return false;
}

std::string FolderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

void MakeFolders(const std::string& path) {
    for (auto slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        mkdir(path.substr(0, slash).c_str(), 0700);
}

// The file itself, when the path is a link to it: renaming would replace the link.
std::string WithoutLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

// Lets `change` edit the text, alone among all processes; the file is replaced when it returns true.
template <typename Change>
bool ChangeSettingsFile(Change change) {
    const auto& store = TheStore();
    if (store.path.empty()) return false;
    MakeFolders(store.path);
    const auto path = WithoutLinks(store.path);
    const auto folder = Open(FolderOf(path), O_RDONLY | O_DIRECTORY);
    if (!folder || flock(folder.Get(), LOCK_EX) != 0) return false;
    try {
        SettingsText settings(ReadSettingsFile(path));
        if (!change(settings)) return false;
        const auto changed = settings.Text();
        return static_cast<off_t>(changed.size()) <= kMaxFileBytes && ReplaceSettingsFile(path, changed);
    } catch (const RuntimeError&) {
        return false;
    }
}

}  // namespace

void SetSettingsFile(std::string path, std::string_view topKey) {
    TheStore() = {std::move(path), std::string(TrimEnd(topKey, "\\")), {}, {}, {}, false};
}

void OverrideSetting(const std::string& name, const std::string& text) {
    TheStore().overrides[name] = text;
}

void SetSettingDefault(const std::string& name, const std::string& text) {
    TheStore().defaults[name] = text;
}

std::optional<RegistryValue> ReadRegistryValue(RegistryHive, const std::string& keyPath,
                                               const std::string& name, std::size_t maxBytes) {
    const auto& store = TheStore();
    const auto place = NameOf(keyPath, name);
    auto value = TextIn(store.overrides, place);
    if (!value) value = SettingsText(SettingsNow()).Find(place);
    if (!value) value = TextIn(store.defaults, place);
    if (!value) return std::nullopt;
    return AsRead(std::move(*value), maxBytes);
}

bool WriteRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name, std::uint32_t type,
                        std::string_view data) {
    const auto place = NameOf(keyPath, name);
    const bool written = ChangeSettingsFile([&](SettingsText& settings) {
        settings.Put(place, {type, std::string(data)});
        return true;
    });
    if (written) TheStore().overrides.erase(place);
    return written;
}

Path ReadRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name) {
    constexpr std::size_t kMaxPath = 4096;
    const auto value = ReadRegistryValue(hive, keyPath, name, kMaxPath);
    return value ? Path::FromSystem(value->data) : Path();
}

bool WriteRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name,
                       const Path& path) {
    return WriteRegistryValue(hive, keyPath, name, RegistryType::String, path.System());
}

bool RemoveRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name) {
    const auto place = NameOf(keyPath, name);
    const bool overridden = TheStore().overrides.erase(place) != 0;
    const bool removed = ChangeSettingsFile([&](SettingsText& settings) { return settings.Remove(place); });
    return overridden || removed;
}

}  // namespace os
