#include "app/services/TimeText.h"

#include <algorithm>

namespace {

std::string Digits(int number, std::size_t width) {
    const auto digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

}  // namespace

std::string DateText(const os::LocalTime& time) {
    return Digits(time.year, 4) + "-" + Digits(time.month, 2) + "-" + Digits(time.day, 2);
}

std::string TimeText(const os::LocalTime& time) {
    return Digits(time.hour, 2) + ":" + Digits(time.minute, 2) + ":" + Digits(time.second, 2);
}
