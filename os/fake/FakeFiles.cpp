#include "os/fake/FakeFiles.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "os/Files.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeWorld.h"

namespace {

constexpr std::int32_t kNotFound = 3;

// Of a file or of what lies below a folder.
struct Trouble {
    std::int32_t number = 0;  // with which changes fail
    bool isUnreadable = false;
    std::int64_t milliseconds = 0;  // of every change
};

struct Contents {
    std::map<std::string, std::string> files;
    std::set<std::string> folders{"", "/", "/program"};
    std::map<std::string, Trouble> troubles;
    std::map<std::string, std::int64_t> changed;  // counted, by file
};
Contents& disk = os::fake::Fresh<Contents>();

// Paths are told apart by what they are for the system, with "/" between folders.
std::string Plain(const os::Path& named) {
    auto path = named.System();
    std::replace(path.begin(), path.end(), '\\', '/');
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

std::string Plain(const std::string& text) {
    return Plain(os::Path::FromText(text));
}

std::string ParentOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool LiesAtOrBelow(const std::string& path, const std::string& place) {
    if (!path.starts_with(place)) return false;
    return path.size() == place.size() || place == "/" || path[place.size()] == '/';
}

// Counts the change, lets its time pass and throws when it is to fail.
void BeginChange(const std::string& path) {
    ++os::fake::files.writes;
    for (const auto& [place, trouble] : disk.troubles) {
        if (!LiesAtOrBelow(path, place)) continue;
        os::fake::MoveClock(trouble.milliseconds);
        if (trouble.number != 0) throw RuntimeError(trouble.number, "The change was made to fail");
    }
    if (!disk.folders.contains(ParentOf(path))) throw RuntimeError(kNotFound, "Path not found");
}

void BeginFileChange(const std::string& path) {
    BeginChange(path);
    if (disk.folders.contains(path)) throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error");
}

}  // namespace

bool os::FileExists(const Path& path) {
    return disk.files.contains(Plain(path));
}

bool os::FolderExists(const Path& path) {
    return disk.folders.contains(Plain(path));
}

void os::MakeFolder(const Path& path) {
    const auto plain = Plain(path);
    if (disk.folders.contains(plain)) return;
    BeginChange(plain);
    if (disk.files.contains(plain)) throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error");
    disk.folders.insert(plain);
}

std::optional<std::string> os::ReadWholeFile(const Path& path, std::size_t maxBytes) {
    const auto plain = Plain(path);
    for (const auto& [place, trouble] : disk.troubles) {
        if (trouble.isUnreadable && LiesAtOrBelow(plain, place)) return std::nullopt;
    }
    const auto found = disk.files.find(plain);
    if (found == disk.files.end()) return std::nullopt;
    return found->second.substr(0, maxBytes);
}

void os::AppendToFile(const Path& path, std::string_view bytes) {
    const auto plain = Plain(path);
    BeginFileChange(plain);
    disk.files[plain].append(bytes);
    ++disk.changed[plain];
}

void os::ReplaceFileWith(const Path& path, std::string_view bytes) {
    const auto plain = Plain(path);
    BeginFileChange(plain);
    disk.files[plain].assign(bytes);
    ++disk.changed[plain];
}

void os::RenameFile(const Path& from, const Path& to) {
    const auto plain = Plain(to);
    BeginFileChange(plain);
    const auto found = disk.files.find(Plain(from));
    if (found == disk.files.end()) throw RuntimeError(kNotFound, "File not found");
    disk.files[plain] = std::move(found->second);
    disk.files.erase(found);
    ++disk.changed[plain];
}

void os::RemoveFile(const Path& path) {
    const auto plain = Plain(path);
    if (!disk.files.contains(plain) && !disk.folders.contains(plain)) return;
    BeginFileChange(plain);
    disk.files.erase(plain);
}

os::Path os::InSpellingOfDisk(const Path& folder, std::string_view name) {
    const auto wanted = Plain(folder / name);
    for (const auto& [path, bytes] : disk.files)
        if (SameWithoutCase(path, wanted)) return Path::FromSystem(path);
    for (const auto& path : disk.folders)
        if (SameWithoutCase(path, wanted)) return Path::FromSystem(path);
    return folder / name;
}

struct os::FolderReader::Impl {
    std::vector<FolderEntry> entries;
};

os::FolderReader::FolderReader(const Path& folder) : impl_(new Impl) {
    const auto plain = Plain(folder);
    const auto nameOf = [](const std::string& path) { return path.substr(path.rfind('/') + 1); };
    for (const auto& [path, bytes] : disk.files)
        if (ParentOf(path) == plain)
            impl_->entries.push_back({nameOf(path), false, disk.changed[path], bytes.size()});
    for (const auto& path : disk.folders)
        if (ParentOf(path) == plain && path != plain) impl_->entries.push_back({nameOf(path), true, 0, 0});
}
os::FolderReader::~FolderReader() = default;
os::FolderReader::FolderReader(FolderReader&&) noexcept = default;
os::FolderReader& os::FolderReader::operator=(FolderReader&&) noexcept = default;

std::optional<os::FolderEntry> os::FolderReader::Next() {
    if (impl_->entries.empty()) return {};
    auto entry = std::move(impl_->entries.back());
    impl_->entries.pop_back();
    return entry;
}

os::Path os::WindowsFolder() {
    return Path::FromText(fake::files.windowsFolder);
}

os::Path os::ProgramFile() {
    return ProgramFolder() / "wrenlow.exe";
}

os::Path os::ProgramFolder() {
    return Path::FromText("/program");
}

std::string os::ProgramBaseName() {
    return "wrenlow";
}

void os::fake::PutFile(const std::string& path, std::string_view bytes) {
    const auto plain = Plain(path);
    for (auto folder = ParentOf(plain); disk.folders.insert(folder).second;) folder = ParentOf(folder);
    disk.files[plain].assign(bytes);
    ++disk.changed[plain];
}

std::optional<std::string> os::fake::FileText(const std::string& path) {
    const auto found = disk.files.find(Plain(path));
    if (found == disk.files.end()) return std::nullopt;
    return found->second;
}

void os::fake::FailWrites(const std::string& path, std::int32_t number) {
    disk.troubles[Plain(path)].number = number;
}

void os::fake::FailReads(const std::string& path, bool fail) {
    disk.troubles[Plain(path)].isUnreadable = fail;
}

void os::fake::SlowWrites(const std::string& path, std::int64_t milliseconds) {
    disk.troubles[Plain(path)].milliseconds = milliseconds;
}
