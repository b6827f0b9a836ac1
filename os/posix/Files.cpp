#include "os/Files.h"

#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include "os/posix/FileDescriptor.h"
#include "os/posix/SystemText.h"

namespace {

using os::posix::FileDescriptor;
using os::posix::ThrowLastError;
using os::posix::ThrowSystemError;

std::string SystemPath(const std::string& path) {
    auto system = os::posix::Utf8FromText(path);
    std::replace(system.begin(), system.end(), '\\', '/');
    return system;
}

std::optional<struct stat> Describe(const std::string& systemPath) {
    struct stat description {};
    if (::stat(systemPath.c_str(), &description) != 0) return std::nullopt;
    return description;
}

// Regular files only: a pipe in a file's place must not hold the program up (O_NONBLOCK), nor be taken for
// one.
FileDescriptor OpenFile(const std::string& systemPath, int flags) {
    FileDescriptor file(::open(systemPath.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666));
    struct stat description {};
    if (!file || ::fstat(file.Get(), &description) != 0) return {};
    if (S_ISREG(description.st_mode)) return file;
    errno = S_ISDIR(description.st_mode) ? EISDIR : EINVAL;
    return {};
}

// Whether all bytes were written; errno tells why not.
bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Writes the new content beside the old, with its permissions, and makes it durable, because the rename may
// reach the disk before the bytes do.
void WriteTemporary(const std::string& temporary, const std::string& original, std::string_view bytes) {
    const FileDescriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!file) ThrowLastError();
    if (const auto old = Describe(original)) ::fchmod(file.Get(), old->st_mode & 07777);
    if (!WriteAll(file.Get(), bytes) || ::fsync(file.Get()) != 0) ThrowLastError();
}

std::string ProgramPath() {
    char path[PATH_MAX];
    const auto size = ::readlink("/proc/self/exe", path, sizeof path);
    return os::posix::TextFromUtf8({path, size > 0 ? static_cast<std::size_t>(size) : 0});
}

}  // namespace

bool os::FileExists(const std::string& path) {
    const auto description = Describe(SystemPath(path));
    return description && !S_ISDIR(description->st_mode);
}

bool os::FolderExists(const std::string& path) {
    const auto description = Describe(SystemPath(path));
    return description && S_ISDIR(description->st_mode);
}

void os::MakeFolder(const std::string& path) {
    const auto system = SystemPath(path);
    if (::mkdir(system.c_str(), 0777) == 0) return;
    const int number = errno;
    if (number != EEXIST || !FolderExists(path)) ThrowSystemError(number);
}

std::optional<std::string> os::ReadWholeFile(const std::string& path, std::size_t maxBytes) {
    const auto file = OpenFile(SystemPath(path), O_RDONLY);
    if (!file) return std::nullopt;
    std::string bytes;
    char part[64 * 1024];
    while (bytes.size() < maxBytes) {
        const auto count = ::read(file.Get(), part, std::min(sizeof part, maxBytes - bytes.size()));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        bytes.append(part, static_cast<std::size_t>(count));
    }
    return bytes;
}

void os::AppendToFile(const std::string& path, std::string_view bytes) {
    const auto file = OpenFile(SystemPath(path), O_WRONLY | O_APPEND | O_CREAT);
    if (!file) ThrowLastError();
    const auto sizeBefore = ::lseek(file.Get(), 0, SEEK_END);
    if (WriteAll(file.Get(), bytes)) return;
    const int number = errno;
    // A disk that fills up takes a part: it must not stay as half a line.
    if (::ftruncate(file.Get(), sizeBefore) != 0) ThrowLastError();
    ThrowSystemError(number);
}

void os::ReplaceFileWith(const std::string& path, std::string_view bytes) {
    const auto system = SystemPath(path);
    const auto temporary = system + ".new";
    try {
        WriteTemporary(temporary, system, bytes);
        if (::rename(temporary.c_str(), system.c_str()) != 0) ThrowLastError();
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

void os::RemoveFile(const std::string& path) {
    if (::unlink(SystemPath(path).c_str()) != 0 && errno != ENOENT && errno != ENOTDIR) ThrowLastError();
}

std::string os::WindowsFolder() {
    return {};
}

std::string os::ProgramFolder() {
    const auto path = ProgramPath();
    return path.substr(0, path.rfind('/'));
}

std::string os::ProgramBaseName() {
    const auto path = ProgramPath();
    const auto name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}
