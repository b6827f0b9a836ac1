#include "os/FileWriter.h"

#include "os/win32/SystemError.h"

namespace os {
namespace {

// Tried with other names while somebody else's file is in the way.
constexpr int kMostNames = 100;

// Elsewhere a stream's name is refused, or taken for that of another file.
bool DiskHasStreams(const std::string& path) {
    char volume[MAX_PATH] = "";
    DWORD flags = 0;
    return GetVolumePathNameA(path.c_str(), volume, sizeof volume) &&
           GetVolumeInformationA(volume, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) &&
           (flags & FILE_NAMED_STREAMS) != 0;
}

}  // namespace

struct FileWriter::Impl {
    std::string path;
    std::string temporaryPath;
    HANDLE file = INVALID_HANDLE_VALUE;

    ~Impl() {
        Close();
        if (!temporaryPath.empty()) DeleteFileA(temporaryPath.c_str());
    }

    void Open() {
        for (int i = 0; i < kMostNames && file == INVALID_HANDLE_VALUE; ++i) {
            const auto candidate = path + "." + std::to_string(i) + ".tmp";
            file = CreateFileA(candidate.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
            if (file != INVALID_HANDLE_VALUE) {
                temporaryPath = candidate;
            } else if (GetLastError() != ERROR_FILE_EXISTS) {
                break;
            }
        }
        if (file == INVALID_HANDLE_VALUE) ThrowLastError();
    }

    void Close() {
        if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
        file = INVALID_HANDLE_VALUE;
    }
};

FileWriter::FileWriter(const std::string& path) : impl_(std::make_unique<Impl>()) {
    impl_->path = path;
    impl_->Open();
}

FileWriter::~FileWriter() = default;

void FileWriter::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        constexpr std::size_t kMostAtOnce = 1 << 20;
        const auto part = bytes.substr(0, kMostAtOnce);
        DWORD written = 0;
        if (!WriteFile(impl_->file, part.data(), static_cast<DWORD>(part.size()), &written, nullptr)) {
            ThrowLastError();
        }
        bytes.remove_prefix(written);
    }
}

void FileWriter::MarkFromInternet() {
    if (!DiskHasStreams(impl_->temporaryPath)) return;
    constexpr std::string_view kMark = "[ZoneTransfer]\r\nZoneId=3\r\n";
    const auto stream = impl_->temporaryPath + ":Zone.Identifier";
    const HANDLE mark =
        CreateFileA(stream.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (mark == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(mark, kMark.data(), static_cast<DWORD>(kMark.size()), &written, nullptr);
    CloseHandle(mark);
}

void FileWriter::Finish() {
    if (!FlushFileBuffers(impl_->file)) ThrowLastError();
    impl_->Close();
    const DWORD attributes = GetFileAttributesA(impl_->path.c_str());
    const bool readOnly =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (readOnly) SetFileAttributesA(impl_->path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!MoveFileExA(impl_->temporaryPath.c_str(), impl_->path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        const DWORD error = GetLastError();
        if (readOnly) SetFileAttributesA(impl_->path.c_str(), attributes);
        SetLastError(error);
        ThrowLastError();
    }
    impl_->temporaryPath.clear();
}

}  // namespace os
