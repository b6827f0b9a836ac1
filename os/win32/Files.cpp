#include "os/Files.h"

#include <windows.h>

#include <algorithm>

#include "base/RuntimeError.h"
#include "os/win32/Handle.h"
#include "os/win32/SystemError.h"

namespace os {
namespace {

// Others may read what we write, and write beside us: a log is open to its reader.
constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE;

DWORD Attributes(const std::string& path) {
    return GetFileAttributesA(path.c_str());
}

// All the bytes or an exception; WriteFile takes them in one call.
void WriteAll(HANDLE file, std::string_view bytes) {
    DWORD written = 0;
    if (WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) == FALSE) {
        ThrowLastError();
    }
    if (written != bytes.size()) ThrowSystemError(ERROR_DISK_FULL);
}

std::string ModulePath() {
    char path[MAX_PATH + 1] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return path;
}

}  // namespace

bool FileExists(const std::string& path) {
    const DWORD attributes = Attributes(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool FolderExists(const std::string& path) {
    const DWORD attributes = Attributes(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void MakeFolder(const std::string& path) {
    if (CreateDirectoryA(path.c_str(), nullptr) != FALSE) return;
    const DWORD number = GetLastError();
    if (!FolderExists(path)) ThrowSystemError(number);
}

std::optional<std::string> ReadWholeFile(const std::string& path, std::size_t maxBytes) {
    const Handle file(CreateFileA(path.c_str(), GENERIC_READ, kShared | FILE_SHARE_DELETE, nullptr,
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

void AppendToFile(const std::string& path, std::string_view bytes) {
    const Handle file(CreateFileA(path.c_str(), GENERIC_WRITE, kShared, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) ThrowLastError();
    const DWORD end = SetFilePointer(file.Get(), 0, nullptr, FILE_END);
    if (bytes.empty()) return;
    try {
        WriteAll(file.Get(), bytes);
    } catch (const RuntimeError&) {
        // No half line stays behind.
        SetFilePointer(file.Get(), static_cast<LONG>(end), nullptr, FILE_BEGIN);
        SetEndOfFile(file.Get());
        throw;
    }
}

void ReplaceFileWith(const std::string& path, std::string_view bytes) {
    const auto temporary = path + ".new";
    try {
        Handle file(CreateFileA(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file) ThrowLastError();
        WriteAll(file.Get(), bytes);
        file.Close();
        if (MoveFileExA(temporary.c_str(), path.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE) {
            ThrowLastError();
        }
    } catch (const RuntimeError&) {
        DeleteFileA(temporary.c_str());
        throw;
    }
}

void RemoveFile(const std::string& path) {
    if (!FileExists(path)) return;
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (DeleteFileA(path.c_str()) == FALSE && GetLastError() != ERROR_FILE_NOT_FOUND) ThrowLastError();
}

std::string WindowsFolder() {
    char path[MAX_PATH + 1] = {};
    GetWindowsDirectoryA(path, MAX_PATH);
    return path;
}

std::string ProgramFolder() {
    const auto path = ModulePath();
    const auto end = path.find_last_of('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end);
}

std::string ProgramBaseName() {
    const auto path = ModulePath();
    const auto name = path.substr(path.find_last_of('\\') + 1);
    return name.substr(0, name.find_last_of('.'));
}

}  // namespace os
