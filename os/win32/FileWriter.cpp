#include "os/desktop/FileWriter.h"

#include "os/win32/Handle.h"
#include "os/win32/HeldFile.h"
#include "os/win32/SystemError.h"
#include "os/win32/WidePath.h"

namespace os {
namespace {

// Tried with other names while somebody else's file is in the way.
constexpr int kMaxNames = 100;

// Elsewhere a stream's name is refused, or taken for that of another file.
bool DiskHasStreams(const Path& path) {
    wchar_t volume[MAX_PATH] = L"";
    DWORD flags = 0;
    return GetVolumePathNameW(Wide(path).c_str(), volume, MAX_PATH) &&
           GetVolumeInformationW(volume, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) &&
           (flags & FILE_NAMED_STREAMS) != 0;
}

}  // namespace

struct FileWriter::Impl {
    Path path;
    Path temporaryPath;
    Handle file;

    ~Impl() {
        file.Close();
        if (!temporaryPath.IsEmpty()) DeleteFresh(temporaryPath);
    }

    void Open() {
        for (int i = 0; i < kMaxNames && !file; ++i) {
            const auto candidate = path + ("." + std::to_string(i) + ".tmp");
            file = Handle(CreateFileW(Wide(candidate).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
            if (file) {
                temporaryPath = candidate;
            } else if (GetLastError() != ERROR_FILE_EXISTS) {
                break;
            }
        }
        if (!file) ThrowLastError();
    }
};

FileWriter::FileWriter(const Path& path) : impl_(std::make_unique<Impl>()) {
    impl_->path = path;
    impl_->Open();
}

FileWriter::~FileWriter() = default;

void FileWriter::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        constexpr std::size_t kMaxAtOnce = 1 << 20;
        const auto part = bytes.substr(0, kMaxAtOnce);
        DWORD written = 0;
        if (!WriteFile(impl_->file.Get(), part.data(), static_cast<DWORD>(part.size()), &written, nullptr)) {
            ThrowLastError();
        }
        bytes.remove_prefix(written);
    }
}

void FileWriter::MarkFromInternet() {
    if (!DiskHasStreams(impl_->temporaryPath)) return;
    constexpr std::string_view kMark = "[ZoneTransfer]\r\nZoneId=3\r\n";
    const auto stream = impl_->temporaryPath + ":Zone.Identifier";
    const Handle mark(CreateFileW(Wide(stream).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    if (mark) WriteFile(mark.Get(), kMark.data(), static_cast<DWORD>(kMark.size()), &written, nullptr);
}

void FileWriter::Finish() {
    if (impl_->file && !FlushFileBuffers(impl_->file.Get())) ThrowLastError();
    impl_->file.Close();
    const auto path = Wide(impl_->path);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool readOnly =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (readOnly) SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!MoveOver(impl_->temporaryPath, impl_->path)) {
        const DWORD error = GetLastError();
        if (readOnly) SetFileAttributesW(path.c_str(), attributes);
        SetLastError(error);
        ThrowLastError();
    }
    impl_->temporaryPath = {};
}

}  // namespace os
