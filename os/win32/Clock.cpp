#include "os/Clock.h"

#include <windows.h>

namespace os {

LocalTime Now() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

// The performance counter, because the tick count that Windows XP has wraps after 49 days.
std::int64_t MonotonicMilliseconds() {
    static const std::int64_t ticksPerSecond = [] {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return frequency.QuadPart;
    }();
    LARGE_INTEGER ticks;
    QueryPerformanceCounter(&ticks);
    // Seconds and the rest apart: the product would overflow after some months of a fast counter.
    return ticks.QuadPart / ticksPerSecond * 1000 + ticks.QuadPart % ticksPerSecond * 1000 / ticksPerSecond;
}

}  // namespace os
