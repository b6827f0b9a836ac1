// FileDescriptor: owns one descriptor of the system; SystemError: the system's last failure as an exception.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "base/RuntimeError.h"

namespace os::posix {

class FileDescriptor {
 public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            Close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }
    ~FileDescriptor() { Close(); }

    int Get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

    void Close() {
        if (number_ >= 0) ::close(std::exchange(number_, -1));
    }

 private:
    int number_ = -1;
};

// The failures of getaddrinfo are small negative numbers, which would pass for none of the system's: here
// they lie above all of these. The same turns them back.
constexpr int NumberOfLookUp(int number) {
    return 10'000 - number;
}

[[noreturn]] inline void ThrowSystemError(int number) {
    throw RuntimeError(number, std::generic_category().message(number));
}
[[noreturn]] inline void ThrowLastError() {
    ThrowSystemError(errno);
}

}  // namespace os::posix
