#include "features/IdleMinutes.h"

#include <algorithm>

#include "base/Text.h"
#include "features/modAwayIdleProf.h"

namespace {

constexpr std::int32_t kMaxMinutes = 65'535;  // what the label in the dialog says

std::string_view TakeDigits(std::string_view& text) {
    const auto end = std::min(text.find_first_not_of("0123456789"), text.size());
    const auto digits = text.substr(0, end);
    text.remove_prefix(end);
    return digits;
}

// The number, or one more than the most when it is larger: there may be any number of digits.
std::int32_t CappedNumber(std::string_view digits) {
    std::int32_t number = 0;
    for (const char digit : digits) number = std::min(number * 10 + (digit - '0'), kMaxMinutes + 1);
    return number;
}

}  // namespace

IdleMinutes ReadIdleMinutes(std::string_view text) {
    text = Trim(text);
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    const auto whole = TakeDigits(text);
    const bool hasPoint = text.starts_with('.') || text.starts_with(',');
    if (hasPoint) text.remove_prefix(1);
    const auto fraction = hasPoint ? TakeDigits(text) : std::string_view();
    if (!text.empty() || (whole.empty() && fraction.empty())) return {0, "Enter a valid number."};

    const auto number = CappedNumber(whole);
    if (negative || number > kMaxMinutes || (number == kMaxMinutes && hasPoint))
        return {0, "Enter a number between 0 and 65535 inclusive."};
    if (hasPoint) return {0, "Enter a whole number."};
    if (number > modAwayIdleProf::kMaxIdleMinutes)
        return {0, "AIM can tell an idle time of 1092 minutes at most. Enter a number up to 1092."};
    return {number, nullptr};
}
