// Clock: the time of day for people and a steady time for measuring.
#pragma once

#include <cstdint>

namespace os {

struct LocalTime {
    int year;         // four digits
    int month;        // 1 to 12
    int day;          // 1 to 31
    int hour;         // 0 to 23
    int minute;       // 0 to 59
    int second;       // 0 to 59
    int weekday = 0;  // 0 to 6, from Sunday
};

// The local date and time of the machine.
LocalTime Now();

// Seconds and microseconds since 1 January 1970, 00:00 UTC, of the machine's clock; and a moment in local
// time.
std::int64_t SecondsSince1970();
std::int64_t MicrosecondsSince1970();
LocalTime LocalTimeOf(std::int64_t seconds);

// Milliseconds since an unspecified moment; never goes back and is not affected by setting the clock.
std::int64_t MonotonicMilliseconds();

}  // namespace os
