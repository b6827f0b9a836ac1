#include "os/fake/FakeFiles.h"

#include <algorithm>
#include <map>
#include <set>

#include "base/RuntimeError.h"
#include "os/Files.h"
#include "os/fake/FakeLoop.h"

namespace {

constexpr std::int32_t kNotFound = 3;

struct Disk {
    std::map<std::string, std::string> files;
    std::set<std::string> folders{"", "/", "/program"};
    std::map<std::string, std::int32_t> failingWrites;
    std::set<std::string> failingReads;
    std::size_t reads = 0;
    std::size_t writes = 0;
    std::string programFolder = "/program";
    std::string programBaseName = "wrenlow";
    std::string windowsFolder;
};
Disk disk;
const os::fake::WorldPart part([] { disk = Disk(); });

std::string Plain(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
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

// Counts the change and throws when it is to fail.
void BeginChange(const std::string& path) {
    ++disk.writes;
    for (const auto& [place, number] : disk.failingWrites) {
        if (LiesAtOrBelow(path, place)) throw RuntimeError(number, "The change was made to fail");
    }
    if (!disk.folders.contains(ParentOf(path))) throw RuntimeError(kNotFound, "Path not found");
}

void BeginFileChange(const std::string& path) {
    BeginChange(path);
    if (disk.folders.contains(path)) throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error");
}

}  // namespace

bool os::FileExists(const std::string& path) {
    return disk.files.contains(Plain(path));
}

bool os::FolderExists(const std::string& path) {
    return disk.folders.contains(Plain(path));
}

void os::MakeFolder(const std::string& path) {
    const auto plain = Plain(path);
    if (disk.folders.contains(plain)) return;
    BeginChange(plain);
    if (disk.files.contains(plain)) throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error");
    disk.folders.insert(plain);
}

std::optional<std::string> os::ReadWholeFile(const std::string& path, std::size_t maxBytes) {
    ++disk.reads;
    const auto plain = Plain(path);
    for (const auto& place : disk.failingReads) {
        if (LiesAtOrBelow(plain, place)) return std::nullopt;
    }
    const auto found = disk.files.find(plain);
    if (found == disk.files.end()) return std::nullopt;
    return found->second.substr(0, maxBytes);
}

void os::AppendToFile(const std::string& path, std::string_view bytes) {
    const auto plain = Plain(path);
    BeginFileChange(plain);
    disk.files[plain].append(bytes);
}

void os::ReplaceFileWith(const std::string& path, std::string_view bytes) {
    const auto plain = Plain(path);
    BeginFileChange(plain);
    disk.files[plain].assign(bytes);
}

void os::RemoveFile(const std::string& path) {
    const auto plain = Plain(path);
    if (!disk.files.contains(plain) && !disk.folders.contains(plain)) return;
    BeginFileChange(plain);
    disk.files.erase(plain);
}

std::string os::WindowsFolder() {
    return disk.windowsFolder;
}

std::string os::ProgramFolder() {
    return disk.programFolder;
}

std::string os::ProgramBaseName() {
    return disk.programBaseName;
}

void os::fake::PutFile(const std::string& path, std::string_view bytes) {
    const auto plain = Plain(path);
    for (auto folder = ParentOf(plain); disk.folders.insert(folder).second;) folder = ParentOf(folder);
    disk.files[plain].assign(bytes);
}

std::optional<std::string> os::fake::FileText(const std::string& path) {
    const auto found = disk.files.find(Plain(path));
    if (found == disk.files.end()) return std::nullopt;
    return found->second;
}

void os::fake::FailWrites(const std::string& path, std::int32_t number) {
    disk.failingWrites.erase(Plain(path));
    if (number != 0) disk.failingWrites[Plain(path)] = number;
}

void os::fake::FailReads(const std::string& path, bool fail) {
    disk.failingReads.erase(Plain(path));
    if (fail) disk.failingReads.insert(Plain(path));
}

std::size_t os::fake::ReadCount() {
    return disk.reads;
}

std::size_t os::fake::WriteCount() {
    return disk.writes;
}

void os::fake::SetProgram(const std::string& folder, const std::string& baseName) {
    disk.programFolder = Plain(folder);
    disk.programBaseName = baseName;
    for (auto plain = Plain(folder); disk.folders.insert(plain).second;) plain = ParentOf(plain);
}

void os::fake::SetWindowsFolder(const std::string& folder) {
    disk.windowsFolder = folder;
}
