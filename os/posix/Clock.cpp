#include "os/Clock.h"

#include <ctime>

os::LocalTime os::Now() {
    const std::time_t seconds = ::time(nullptr);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    // A leap second is shown as the second before it.
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec < 60 ? local.tm_sec : 59};
}

std::int64_t os::MonotonicMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}
