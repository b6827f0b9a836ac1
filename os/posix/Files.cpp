#include "os/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "os/posix/FileDescriptor.h"

namespace {

using os::posix::FileDescriptor;
using os::posix::ThrowLastError;
using os::posix::ThrowSystemError;

using os::Path;

// What we write is nobody else's business.
constexpr mode_t kFileMode = 0600;
constexpr mode_t kFolderMode = 0700;

std::optional<struct stat> Describe(const std::string& systemPath) {
    struct stat description {};
    if (::stat(systemPath.c_str(), &description) != 0) return std::nullopt;
    return description;
}

// Regular files only: a pipe in a file's place must not hold the program up (O_NONBLOCK), nor be taken for
// one.
FileDescriptor OpenFile(const std::string& systemPath, int flags) {
    FileDescriptor file(::open(systemPath.c_str(), flags | O_CLOEXEC | O_NONBLOCK, kFileMode));
    struct stat description {};
    if (!file || ::fstat(file.Get(), &description) != 0) return {};
    if (S_ISREG(description.st_mode)) return file;
    errno = S_ISDIR(description.st_mode) ? EISDIR : EINVAL;
    return {};
}

// How many of the bytes were written; when not all, errno tells why.
std::size_t Write(int file, std::string_view bytes) {
    // A file that reaches its limit (RLIMIT_FSIZE) is a failed write, not the end of the program.
    static const auto earlier = ::signal(SIGXFSZ, SIG_IGN);
    (void)earlier;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto written = ::write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) break;
        done += static_cast<std::size_t>(written);
    }
    return done;
}

// Writes the new content beside the old, with its permissions, and makes it durable, because the rename may
// reach the disk before the bytes do.
void WriteTemporary(const std::string& temporary, const std::string& original, std::string_view bytes) {
    ::unlink(temporary.c_str());  // left by a process that was killed
    const FileDescriptor file(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kFileMode));
    if (!file) ThrowLastError();
    if (const auto old = Describe(original)) ::fchmod(file.Get(), old->st_mode & 07777);
    if (Write(file.Get(), bytes) != bytes.size() || ::fsync(file.Get()) != 0) ThrowLastError();
}

}  // namespace

bool os::FileExists(const Path& path) {
    const auto description = Describe(path.System());
    return description && !S_ISDIR(description->st_mode);
}

bool os::FolderExists(const Path& path) {
    const auto description = Describe(path.System());
    return description && S_ISDIR(description->st_mode);
}

void os::MakeFolder(const Path& path) {
    const auto& system = path.System();
    if (::mkdir(system.c_str(), kFolderMode) == 0) return;
    const int number = errno;
    if (number != EEXIST || !FolderExists(path)) ThrowSystemError(number);
}

std::optional<std::string> os::ReadWholeFile(const Path& path, std::size_t maxBytes) {
    const auto file = OpenFile(path.System(), O_RDONLY);
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

void os::AppendToFile(const Path& path, std::string_view bytes) {
    const auto file = OpenFile(path.System(), O_WRONLY | O_APPEND | O_CREAT);
    if (!file) ThrowLastError();
    const auto written = Write(file.Get(), bytes);
    if (written == bytes.size()) return;
    const int number = errno;
    // A disk that fills up takes a part: it must not stay as half a line. The position is behind it.
    if (written > 0) {
        const auto end = ::lseek(file.Get(), 0, SEEK_CUR);
        if (::ftruncate(file.Get(), end - static_cast<off_t>(written)) != 0) ThrowLastError();
    }
    ThrowSystemError(number);
}

void os::ReplaceFileWith(const Path& path, std::string_view bytes) {
    const auto& system = path.System();
    const auto temporary = system + ".new";
    try {
        WriteTemporary(temporary, system, bytes);
        if (::rename(temporary.c_str(), system.c_str()) != 0) ThrowLastError();
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

void os::RenameFile(const Path& from, const Path& to) {
    if (::rename(from.System().c_str(), to.System().c_str()) != 0) ThrowLastError();
}

void os::RemoveFile(const Path& path) {
    if (::unlink(path.System().c_str()) != 0 && errno != ENOENT && errno != ENOTDIR) ThrowLastError();
}

os::Path os::InSpellingOfDisk(const Path& folder, std::string_view name) {
    const auto wanted = folder / name;
    struct stat description {};
    if (::lstat(wanted.System().c_str(), &description) == 0) return wanted;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.System().c_str()), ::closedir);
    if (!entries) return wanted;
    const auto bare = Path::FromText(name);
    while (const auto* const entry = ::readdir(entries.get())) {
        if (::strcasecmp(entry->d_name, bare.System().c_str()) == 0)
            return Path::FromSystem(folder.System() + "/" + entry->d_name);
    }
    return wanted;
}

struct os::FolderReader::Impl {
    std::unique_ptr<DIR, int (*)(DIR*)> entries;
};

os::FolderReader::FolderReader(const Path& folder)
    : impl_(new Impl{{::opendir(folder.System().c_str()), ::closedir}}) {}
os::FolderReader::~FolderReader() = default;
os::FolderReader::FolderReader(FolderReader&&) noexcept = default;
os::FolderReader& os::FolderReader::operator=(FolderReader&&) noexcept = default;

std::optional<os::FolderEntry> os::FolderReader::Next() {
    if (!impl_->entries) return {};
    while (const auto* const entry = ::readdir(impl_->entries.get())) {
        const std::string_view name = entry->d_name;
        struct stat description {};
        if (name == "." || name == ".." ||
            ::fstatat(::dirfd(impl_->entries.get()), entry->d_name, &description, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (!S_ISREG(description.st_mode) && !S_ISDIR(description.st_mode)) continue;
        constexpr std::int64_t kPerSecond = 1'000'000'000;
        return FolderEntry{std::string(name), S_ISDIR(description.st_mode),
                           description.st_mtim.tv_sec * kPerSecond + description.st_mtim.tv_nsec,
                           static_cast<std::uint64_t>(description.st_size)};
    }
    return {};
}

os::Path os::WindowsFolder() {
    return {};
}

os::Path os::ProgramFile() {
    char path[PATH_MAX];
    const auto size = ::readlink("/proc/self/exe", path, sizeof path);
    return Path::FromSystem({path, size > 0 ? static_cast<std::size_t>(size) : 0});
}

os::Path os::ProgramFolder() {
    const auto path = ProgramFile().System();
    return Path::FromSystem(path.substr(0, path.rfind('/')));
}

std::string os::ProgramBaseName() {
    const auto path = ProgramFile().Shown();
    const auto name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}
