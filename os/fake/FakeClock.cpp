#include "os/fake/FakeClock.h"

#include <ctime>

namespace {
std::int64_t steadyTime = 0;
}

os::LocalTime os::Now() {
    return fake::timeOfDay.local;
}

std::int64_t os::SecondsSince1970() {
    return fake::timeOfDay.secondsSince1970;
}

std::int64_t os::MicrosecondsSince1970() {
    return fake::timeOfDay.secondsSince1970 * 1'000'000;
}

os::LocalTime os::LocalTimeOf(std::int64_t seconds) {
    const auto moment = static_cast<std::time_t>(seconds);
    const auto& utc = *std::gmtime(&moment);
    return {utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour,
            utc.tm_min,         utc.tm_sec,     utc.tm_wday};
}

std::int64_t os::MonotonicMilliseconds() {
    return steadyTime;
}

void os::fake::MoveClock(std::int64_t milliseconds) {
    steadyTime += milliseconds;
}
