#include "os/Clock.h"

#include <ctime>

os::LocalTime os::Now() {
    return LocalTimeOf(SecondsSince1970());
}

std::int64_t os::SecondsSince1970() {
    return ::time(nullptr);
}

std::int64_t os::MicrosecondsSince1970() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1'000;
}

os::LocalTime os::LocalTimeOf(std::int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm local{};
    ::localtime_r(&moment, &local);
    // A leap second is shown as the second before it.
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec < 60 ? local.tm_sec : 59,
            local.tm_wday};
}

std::int64_t os::MonotonicMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}
