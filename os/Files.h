// Files: the little that the program asks of a file system.
//
// Functions that change something throw RuntimeError with the system's error number; questions answer false
// or nothing instead. What is made natively is for its owner alone (files 0600, folders 0700).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "os/Path.h"

namespace os {

// Whether the path names a file (read-only and hidden ones too), or a folder.
bool FileExists(const Path& path);
bool FolderExists(const Path& path);

// Creates one folder; its parent must exist. An existing folder is no error.
void MakeFolder(const Path& path);

// The file's bytes, its first `maxBytes` at most; nothing when it cannot be read.
std::optional<std::string> ReadWholeFile(const Path& path, std::size_t maxBytes);

// Appends in one write at the file's end of that moment, creating the file when missing; others may read it
// and append to it meanwhile, and nobody's bytes are lost. Either all bytes are in the file afterwards or,
// after a failure, none of them. Empty bytes only make sure that it exists.
void AppendToFile(const Path& path, std::string_view bytes);

// Replaces the file as a whole: written to a temporary file beside it and renamed, so that a failure leaves
// the old file as it was and nothing else behind. While another program holds one of the two open, as virus
// scanners do with fresh files, renaming is tried again, for 2 s at most.
void ReplaceFileWith(const Path& path, std::string_view bytes);

// Gives the file another name in the same folder, which no other file has afterwards; tried again as above.
void RenameFile(const Path& from, const Path& to);

// Deletes the file, a read-only one too. A missing file is no error.
void RemoveFile(const Path& path);

// The file or folder of that name, a text, in the folder: in the spelling of one that is there already, when
// the two differ in the case of ASCII letters only. Windows itself takes such names for the same.
Path InSpellingOfDisk(const Path& folder, std::string_view name);

// What a folder holds, one by one, in no order; nothing of a folder that cannot be read, and neither links,
// pipes nor devices.
struct FolderEntry {
    std::string name;  // as in Path::System
    bool isFolder = false;
    std::int64_t changed = 0;  // when it was changed last: a number that differs afterwards, no time
    std::uint64_t size = 0;    // of a file, in bytes
};

class FolderReader {
 public:
    explicit FolderReader(const Path& folder);
    ~FolderReader();
    FolderReader(FolderReader&&) noexcept;
    FolderReader& operator=(FolderReader&&) noexcept;

    // The next entry; nothing at the end.
    std::optional<FolderEntry> Next();

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The folder of Windows, without a separator at its end; empty on other systems.
Path WindowsFolder();

// The executable, its folder without a separator at its end, and its name as people read it, without folder
// and extension.
Path ProgramFile();
Path ProgramFolder();
std::string ProgramBaseName();

}  // namespace os
