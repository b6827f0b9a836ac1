// Files: the little that the program asks of a file system.
//
// Paths are text in the program's code page (the ANSI code page on Windows; Windows-1252 natively, turned
// into UTF-8 for the system). Natively "/" and "\" both separate folders. Functions that change something
// throw RuntimeError with the system's error number; questions answer false or nothing instead.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace os {

// Whether the path names a file (read-only and hidden ones too), or a folder.
bool FileExists(const std::string& path);
bool FolderExists(const std::string& path);

// Creates one folder; its parent must exist. An existing folder is no error.
void MakeFolder(const std::string& path);

// The file's bytes, its first `maxBytes` at most; nothing when it cannot be read.
std::optional<std::string> ReadWholeFile(const std::string& path, std::size_t maxBytes);

// Appends in one write, creating the file when missing; others may read the file meanwhile. Either all bytes
// are in the file afterwards or, after a failure, none of them. Empty bytes only make sure that it exists.
void AppendToFile(const std::string& path, std::string_view bytes);

// Replaces the file as a whole: written to a temporary file beside it and renamed, so that a failure leaves
// the old file as it was and nothing else behind.
void ReplaceFileWith(const std::string& path, std::string_view bytes);

// Deletes the file, a read-only one too. A missing file is no error.
void RemoveFile(const std::string& path);

// The folder of the operating system, without a separator at its end; "" where there is no such folder.
std::string WindowsFolder();

// The folder of the executable, without a separator at its end, and the executable's name without folder and
// extension.
std::string ProgramFolder();
std::string ProgramBaseName();

}  // namespace os
