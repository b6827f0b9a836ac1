// UserThread: what the user does, while the program under test stands in a message loop of its own. The
// Windows compilers' thread model has no std::thread.
#pragma once

#include <windows.h>

#include <functional>
#include <utility>

class UserThread {
 public:
    explicit UserThread(std::function<void()> steps)
        : steps_(std::move(steps)), thread_(CreateThread(nullptr, 0, Run, this, 0, nullptr)) {}
    // Waits until the user has finished.
    ~UserThread() {
        WaitForSingleObject(thread_, INFINITE);
        CloseHandle(thread_);
    }
    UserThread(const UserThread&) = delete;
    UserThread& operator=(const UserThread&) = delete;

 private:
    static DWORD CALLBACK Run(void* self) {
        static_cast<UserThread*>(self)->steps_();
        return 0;
    }

    std::function<void()> steps_;
    HANDLE thread_;
};
