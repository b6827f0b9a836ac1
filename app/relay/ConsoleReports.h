// ConsoleReports: failures as lines of text, for a program without windows. At most kMaxPerSecond come in a
// second; the next line after a silence tells how many were left out.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class ConsoleReports {
 public:
    static constexpr int kMaxPerSecond = 20;

    // The lines to write, each with its line end; "" when the second is full. Control bytes are shown as "?",
    // because a description may hold what a stranger sent.
    std::string LinesFor(const std::string& description, std::int32_t number, const std::string& where,
                         std::int16_t line);

 private:
    std::int64_t secondBegan_ = INT64_MIN;
    int written_ = 0;
    int leftOut_ = 0;
};

// The text in UTF-8 with control characters as "?", those that terminals take as beginning with 0x80 to 0x9F
// too. What is no UTF-8 is read as Windows-1252.
std::string Printable(std::string text);
