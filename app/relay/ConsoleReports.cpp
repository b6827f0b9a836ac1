#include "app/relay/ConsoleReports.h"

#include <algorithm>

#include "base/Unicode.h"
#include "os/Clock.h"

std::string ConsoleReports::LinesFor(const std::string& description, std::int32_t number,
                                     const std::string& where, std::int16_t line) {
    constexpr std::int64_t kSecond = 1000;
    const auto now = os::MonotonicMilliseconds();
    if (secondBegan_ == INT64_MIN || now - secondBegan_ >= kSecond) {
        secondBegan_ = now;
        written_ = 0;
    }
    if (written_ == kMaxPerSecond) {
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
    // Two lines are printed for each connection, and hardly one has more than ASCII.
    const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7F; };
    if (std::all_of(text.begin(), text.end(), isPlain)) return text;
    std::string printable;
    const auto utf8 = AsUtf8(text);
    for (std::string_view rest = utf8; !rest.empty();) {
        const auto character = TakeUtf8(rest).value_or(U'?');
        const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
        AppendUtf8(printable, isControl ? U'?' : character);
    }
    return printable;
}
