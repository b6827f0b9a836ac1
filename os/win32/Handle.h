// Handle: owns one handle of the system that CloseHandle closes, an invalid one being none.
#pragma once

#include <windows.h>

#include <utility>

namespace os {

class Handle {
 public:
    Handle() = default;
    explicit Handle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Handle() { Close(); }

    HANDLE Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

    void Close() {
        if (handle_ != nullptr) CloseHandle(std::exchange(handle_, nullptr));
    }

 private:
    HANDLE handle_ = nullptr;
};

}  // namespace os
