#include "os/Files.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "os/win32/Handle.h"
#include "os/win32/HeldFile.h"
#include "os/win32/SystemError.h"
#include "os/win32/WidePath.h"

namespace os {
namespace {

// Others may read what we write, and write beside us: a log is open to its reader.
constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE;

DWORD Attributes(const Path& path) {
    return GetFileAttributesW(Wide(path).c_str());
}

// How many of the bytes were written, in one call; when not all, the last error tells why.
DWORD Write(HANDLE file, std::string_view bytes) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    if (WriteFile(file, bytes.data(), size, &written, nullptr) != FALSE && written != size)
        SetLastError(ERROR_DISK_FULL);
    return written;
}

// Takes half a line back, if nobody has written behind it meanwhile.
void CutEnd(const Path& path, std::string_view half) {
    const Handle file(CreateFileW(Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, kShared, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    const auto size = static_cast<DWORD>(half.size());
    std::string end(half.size(), '\0');
    DWORD count = 0;
    LONG high = -1;
    SetFilePointer(file.Get(), -static_cast<LONG>(size), &high, FILE_END);
    if (ReadFile(file.Get(), end.data(), size, &count, nullptr) == FALSE || end != half) return;
    high = -1;
    SetFilePointer(file.Get(), -static_cast<LONG>(size), &high, FILE_END);
    SetEndOfFile(file.Get());
}

}  // namespace

bool FileExists(const Path& path) {
    const DWORD attributes = Attributes(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool FolderExists(const Path& path) {
    const DWORD attributes = Attributes(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void MakeFolder(const Path& path) {
    if (CreateDirectoryW(Wide(path).c_str(), nullptr) != FALSE) return;
    const DWORD number = GetLastError();
    if (!FolderExists(path)) ThrowSystemError(number);
}

std::optional<std::string> ReadWholeFile(const Path& path, std::size_t maxBytes) {
    const Handle file(CreateFileW(Wide(path).c_str(), GENERIC_READ, kShared | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return {};
    std::string bytes;
    char chunk[16 * 1024];
    while (bytes.size() < maxBytes) {
        DWORD count = 0;
        if (ReadFile(file.Get(), chunk, sizeof chunk, &count, nullptr) == FALSE) return {};
        if (count == 0) break;
        bytes.append(chunk, count);
    }
    bytes.resize(std::min(bytes.size(), maxBytes));
    return bytes;
}

void AppendToFile(const Path& path, std::string_view bytes) {
    // With this right alone the system puts every write at the file's end of that moment.
    const Handle file(CreateFileW(Wide(path).c_str(), FILE_APPEND_DATA | SYNCHRONIZE, kShared, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) ThrowLastError();
    if (bytes.empty()) return;
    const auto written = Write(file.Get(), bytes);
    if (written == bytes.size()) return;
    const auto number = GetLastError();
    if (written > 0) CutEnd(path, bytes.substr(0, written));
    ThrowSystemError(number);
}

void ReplaceFileWith(const Path& path, std::string_view bytes) {
    const auto temporary = path + ".new";
    try {
        Handle file(CreateFileW(Wide(temporary).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file || Write(file.Get(), bytes) != bytes.size()) ThrowLastError();
        file.Close();
        if (!MoveOver(temporary, path)) ThrowLastError();
    } catch (const RuntimeError&) {
        DeleteFresh(temporary);
        throw;
    }
}

void RenameFile(const Path& from, const Path& to) {
    if (!MoveOver(from, to)) ThrowLastError();
}

void RemoveFile(const Path& path) {
    if (!FileExists(path)) return;
    const auto wide = Wide(path);
    SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (DeleteFileW(wide.c_str()) == FALSE && GetLastError() != ERROR_FILE_NOT_FOUND) ThrowLastError();
}

Path InSpellingOfDisk(const Path& folder, std::string_view name) {
    return folder / name;
}

struct FolderReader::Impl {
    ~Impl() {
        if (search != INVALID_HANDLE_VALUE) FindClose(search);
    }
    HANDLE search = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW found{};
    bool isRead = false;  // `found` is still to be handed out when not
};

FolderReader::FolderReader(const Path& folder) : impl_(new Impl) {
    impl_->search = FindFirstFileW(Wide(folder / "*").c_str(), &impl_->found);
}
FolderReader::~FolderReader() = default;
FolderReader::FolderReader(FolderReader&&) noexcept = default;
FolderReader& FolderReader::operator=(FolderReader&&) noexcept = default;

std::optional<FolderEntry> FolderReader::Next() {
    auto& found = impl_->found;
    if (impl_->search == INVALID_HANDLE_VALUE) return {};
    for (;;) {
        if (std::exchange(impl_->isRead, true) && FindNextFileW(impl_->search, &found) == FALSE) return {};
        const std::wstring_view name = found.cFileName;
        constexpr DWORD kOthers = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
        if (name == L"." || name == L".." || (found.dwFileAttributes & kOthers) != 0) continue;
        const auto joined = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
        const auto& changed = found.ftLastWriteTime;
        return FolderEntry{FromWide(name).System(), (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                           static_cast<std::int64_t>(joined(changed.dwHighDateTime, changed.dwLowDateTime)),
                           joined(found.nFileSizeHigh, found.nFileSizeLow)};
    }
}

Path WindowsFolder() {
    wchar_t path[MAX_PATH + 1] = {};
    return FromWide({path, GetWindowsDirectoryW(path, MAX_PATH)});
}

Path ProgramFile() {
    return ModulePath();
}

Path ProgramFolder() {
    const auto path = ModulePath().System();
    const auto end = path.find_last_of('\\');
    return Path::FromSystem(path.substr(0, end == std::string::npos ? 0 : end));
}

std::string ProgramBaseName() {
    const auto path = ModulePath().System();
    const auto name = path.substr(path.find_last_of('\\') + 1);
    return Path::FromSystem(name.substr(0, name.find_last_of('.'))).Shown();
}

}  // namespace os
