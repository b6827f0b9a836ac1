#include "app/shell/ConsoleReports.h"

#include <algorithm>

#include "os/Clock.h"

std::string ConsoleReports::LinesFor(const std::string& description, std::int32_t number,
                                     const std::string& where, std::int16_t line) {
    constexpr std::int64_t kSecond = 1000;
    const auto now = os::MonotonicMilliseconds();
    if (secondBegan_ == INT64_MIN || now - secondBegan_ >= kSecond) {
        secondBegan_ = now;
        written_ = 0;
    }
    if (written_ == kMostPerSecond) {
        ++leftOut_;
        return {};
    }
    ++written_;
    std::string lines;
    if (leftOut_ > 0) lines = std::to_string(leftOut_) + " more errors were not shown\n";
    leftOut_ = 0;
    return lines + "error " + std::to_string(number) + ": " + Printable(description) +
           " at: " + Printable(where) + ": " + std::to_string(line) + "\n";
}

std::string Printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; },
        '?');
    return text;
}
