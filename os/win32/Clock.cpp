#include "os/Clock.h"

#include <windows.h>

#include <algorithm>

namespace os {
namespace {

// File times count tenths of microseconds from 1 January 1601.
constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;

LocalTime TimeFrom(const SYSTEMTIME& time) {
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wDayOfWeek};
}

}  // namespace

LocalTime Now() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return TimeFrom(now);
}

std::int64_t SecondsSince1970() {
    return MicrosecondsSince1970() / 1'000'000;
}

std::int64_t MicrosecondsSince1970() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const auto ticks = std::int64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
    return (ticks - kSecondsTo1970 * kTicksPerSecond) / 10;
}

LocalTime LocalTimeOf(std::int64_t seconds) {
    const auto ticks = static_cast<std::uint64_t>((seconds + kSecondsTo1970) * kTicksPerSecond);
    const FILETIME moment{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME utc{}, local{};
    FileTimeToSystemTime(&moment, &utc);
    if (SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) == FALSE) local = utc;
    return TimeFrom(local);
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
    const auto now =
        ticks.QuadPart / ticksPerSecond * 1000 + ticks.QuadPart % ticksPerSecond * 1000 / ticksPerSecond;
    // Of old machines each processor has a counter of its own, and the thread may change to one that is
    // behind.
    static std::int64_t latest = now;
    latest = std::max<std::int64_t>(latest, now);
    return latest;
}

}  // namespace os
