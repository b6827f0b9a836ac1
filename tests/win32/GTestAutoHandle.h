// Included ahead of GoogleTest's own sources on Windows. Without threads GoogleTest leaves its class
// AutoHandle out, although its death tests name it.
#pragma once

#ifdef __cplusplus
#include <windows.h>

#include <utility>

namespace testing {
namespace internal {

class AutoHandle {
 public:
    AutoHandle() = default;
    explicit AutoHandle(HANDLE handle) : handle_(handle) {}
    ~AutoHandle() { Reset(); }
    AutoHandle(const AutoHandle&) = delete;
    AutoHandle& operator=(const AutoHandle&) = delete;

    HANDLE Get() const { return handle_; }
    void Reset(HANDLE handle = nullptr) {
        const HANDLE old = std::exchange(handle_, handle);
        if (old != nullptr && old != INVALID_HANDLE_VALUE) CloseHandle(old);
    }

 private:
    HANDLE handle_ = nullptr;
};

}  // namespace internal
}  // namespace testing
#endif
