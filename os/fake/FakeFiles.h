// FakeFiles: the files of a test, in memory. Paths count the same with "/" and "\"; case matters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace os::fake {

// Puts a file there, with the folders above it; the file's bytes, or nothing when there is none.
void PutFile(const std::string& path, std::string_view bytes);
std::optional<std::string> FileText(const std::string& path);

// From now on everything that changes the file or what lies below the folder fails with the number; reading
// it answers nothing. 0 ends that. FileExists and FolderExists still tell the truth.
void FailWrites(const std::string& path, std::int32_t number);
void FailReads(const std::string& path, bool fail);

// How many times files were read, and changed (also in vain), since ResetWorld.
std::size_t ReadCount();
std::size_t WriteCount();

// What ProgramFolder and ProgramBaseName answer: "/program" and "wrenlow" in a fresh world.
void SetProgram(const std::string& folder, const std::string& baseName);

// What WindowsFolder answers; "" in a fresh world.
void SetWindowsFolder(const std::string& folder);

}  // namespace os::fake
