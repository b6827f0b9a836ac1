// Included ahead of GoogleTest on Windows, where the compilers' thread model has no std::mutex: this class,
// for GoogleTest's own tests, is all that would need one.
#pragma once

#ifdef __cplusplus
namespace testing::internal {
struct Notification {
    void WaitForNotification() {}
};
}  // namespace testing::internal
#endif
