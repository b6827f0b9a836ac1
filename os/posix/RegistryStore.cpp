#include "os/RegistryStore.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

#include "os/SettingsFile.h"
#include "os/posix/FileDescriptor.h"
#include "os/posix/SettingsText.h"

namespace os {
namespace {

using posix::FileDescriptor;

// Larger files are not ours: they are not read, and never written over.
constexpr std::size_t kLargestFile = 1 << 20;

using Place = std::pair<std::string, std::string>;  // key and name, both folded
using Values = std::map<Place, RegistryValue>;

struct Store {
    std::string path;
    std::string topKey;
    Values overrides;
    Values defaults;
};

Store& TheStore() {
    static Store store;
    return store;
}

Place PlaceOf(const std::string& key, const std::string& name) {
    return {FoldKey(key), FoldName(name)};
}

std::optional<RegistryValue> ValueAt(const Values& values, const Place& place) {
    const auto found = values.find(place);
    if (found == values.end()) return std::nullopt;
    return found->second;
}

FileDescriptor Open(const std::string& path, int flags, mode_t mode = 0) {
    return FileDescriptor(open(path.c_str(), flags | O_CLOEXEC, mode));
}

// The file's text; "" when there is none, nothing when it cannot be read. Not blocking, because somebody may
// have put a pipe there.
std::optional<std::string> ReadSettingsFile(const std::string& path) {
    const auto file = Open(path, O_RDONLY | O_NONBLOCK);
    if (!file) return errno == ENOENT ? std::optional<std::string>("") : std::nullopt;
    struct stat status {};
    if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    if (static_cast<std::uintmax_t>(status.st_size) > kLargestFile) return std::nullopt;
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        const auto count = read(file.Get(), text.data() + size, text.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    text.resize(size);
    return text;
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
    const auto text = ReadSettingsFile(path);
    if (!text) return false;
    SettingsText settings(*text, store.topKey);
    if (!change(settings)) return false;
    const auto changed = settings.Text();
    return changed.size() <= kLargestFile && ReplaceSettingsFile(path, changed);
}

}  // namespace

void SetSettingsFile(std::string path, std::string topKey) {
    TheStore() = {std::move(path), std::move(topKey), {}, {}};
}

void OverrideSetting(const std::string& name, const std::string& text) {
    auto& store = TheStore();
    store.overrides[PlaceOf(store.topKey, name)] = {RegistryType::String, text};
}

void SetSettingDefault(const std::string& name, const std::string& text) {
    auto& store = TheStore();
    store.defaults[PlaceOf(store.topKey, name)] = {RegistryType::String, text};
}

std::optional<RegistryValue> ReadRegistryValue(RegistryHive, const std::string& keyPath,
                                               const std::string& name, std::size_t maxBytes) {
    const auto& store = TheStore();
    const auto place = PlaceOf(keyPath, name);
    auto value = ValueAt(store.overrides, place);
    if (!value) {
        if (const auto text = ReadSettingsFile(store.path))
            value = SettingsText(*text, store.topKey).Find(keyPath, name);
    }
    if (!value) value = ValueAt(store.defaults, place);
    if (!value) return std::nullopt;
    return AsRead(std::move(*value), maxBytes);
}

bool WriteRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name, std::uint32_t type,
                        std::string_view data) {
    const RegistryValue value{type, std::string(data)};
    if (!ChangeSettingsFile([&](SettingsText& settings) {
            settings.Put(keyPath, name, value);
            return true;
        }))
        return false;
    TheStore().overrides.erase(PlaceOf(keyPath, name));
    return true;
}

bool RemoveRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name) {
    const bool overridden = TheStore().overrides.erase(PlaceOf(keyPath, name)) != 0;
    const bool removed =
        ChangeSettingsFile([&](SettingsText& settings) { return settings.Remove(keyPath, name); });
    return overridden || removed;
}

}  // namespace os
