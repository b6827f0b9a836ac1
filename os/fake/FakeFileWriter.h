// FakeFileWriter: files written piece by piece to the files of a test (FakeFiles.h), on a disk that can be
// full.
#pragma once

#include <cstdint>
#include <string>

namespace os::fake {

// From now on writers fail with the number (112, say, for a full disk) once they have written that many
// bytes. 0 ends that.
void FailWritersAfter(std::uint64_t bytes, std::int32_t number);

// Whether the file was marked as one from the internet.
bool IsMarkedFromInternet(const std::string& path);

}  // namespace os::fake
