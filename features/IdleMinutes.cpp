#include "features/IdleMinutes.h"

#include <algorithm>

namespace {

constexpr std::int32_t kMostMinutes = 65'535;

std::string_view TakeDigits(std::string_view& text) {
    const auto end = std::min(text.find_first_not_of("0123456789"), text.size());
    const auto digits = text.substr(0, end);
    text.remove_prefix(end);
    return digits;
}

std::string_view Trimmed(std::string_view text) {
    const auto begin = std::min(text.find_first_not_of(" \t"), text.size());
    const auto end = text.find_last_not_of(" \t") + 1;
    return text.substr(begin, std::max(begin, end) - begin);
}

// The number, or one more than the most when it is larger: there may be any number of digits.
std::int32_t CappedNumber(std::string_view digits) {
    std::int32_t number = 0;
    for (const char digit : digits) number = std::min(number * 10 + (digit - '0'), kMostMinutes + 1);
    return number;
}

bool IsZero(std::string_view digits) {
    return digits.find_first_not_of('0') == std::string_view::npos;
}

}  // namespace

IdleMinutes ReadIdleMinutes(std::string_view text) {
    text = Trimmed(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const auto whole = TakeDigits(text);
    const bool hasPoint = text.starts_with('.') || text.starts_with(',');
    if (hasPoint) text.remove_prefix(1);
    const auto fraction = hasPoint ? TakeDigits(text) : std::string_view();
    if (!text.empty() || (whole.empty() && fraction.empty())) return {0, "Enter a valid number."};

    const auto number = CappedNumber(whole);
    const bool isWhole = IsZero(fraction);
    if ((negative && !(number == 0 && isWhole)) || number > kMostMinutes ||
        (number == kMostMinutes && !isWhole))
        return {0, "Enter a number between 0 and 65535 inclusive."};
    if (!isWhole) return {0, "Enter a whole number."};
    return {number, nullptr};
}
