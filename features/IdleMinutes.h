// IdleMinutes: what a user typed as a number of idle minutes.
#pragma once

#include <cstdint>
#include <string_view>

struct IdleMinutes {
    std::int32_t minutes = 0;
    const char* refusal = nullptr;  // the message to show; nullptr when `minutes` is good
};

// Reads the text in the same way in every locale: digits alone, blanks around them. "1,000" is refused and
// not taken for 1, whatever the comma means where the user lives. The range is checked before the fraction,
// so that 65535.5 is out of range.
IdleMinutes ReadIdleMinutes(std::string_view text);
