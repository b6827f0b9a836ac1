// FakeFiles: the files of a test, in memory. Paths count the same with "/" and "\"; case matters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "os/fake/FakeWorld.h"

namespace os::fake {

struct Files {
    std::size_t writes = 0;                  // changes of files, in vain or not
    std::string windowsFolder = "/windows";  // "" for a system without Windows
};
inline Files& files = Fresh<Files>();

// Puts a file there, with the folders above it; the file's bytes, or nothing when there is none.
void PutFile(const std::string& path, std::string_view bytes);
std::optional<std::string> FileText(const std::string& path);

// From now on everything that changes the file or what lies below the folder fails with the number; reading
// it answers nothing. 0 ends that. FileExists and FolderExists still tell the truth.
void FailWrites(const std::string& path, std::int32_t number);
void FailReads(const std::string& path, bool fail);

// From now on every change of the file or of what lies below the folder takes so long, by the fake clock.
void SlowWrites(const std::string& path, std::int64_t milliseconds);

}  // namespace os::fake
