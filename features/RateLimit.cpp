#include "features/RateLimit.h"

#include <algorithm>

#include "base/RuntimeError.h"
#include "features/SnacBytes.h"

namespace {

// A class of frames that share a limit; 35 bytes, 30 from servers that are asked by old clients:
//
//   offset  width  field                       offset  width  field
//   0       2      number of the class         18      4      level of being cut off
//   2       4      window                      22      4      level of the moment
//   6       4      level of "clear again"      26      4      highest level
//   10      4      level of the warning        30      5      not used here, where there
//   14      4      level of being ignored
constexpr std::size_t kShortClass = 30;
constexpr std::size_t kLongClass = 35;

}  // namespace

// The data: count of the classes (2), these; then for each its number (2), a count (2) and so many families
// and subtypes (2 each). The number of the class that the kind belongs to; 0 when it is in none.
std::uint16_t RateLimit::ClassIn(std::string_view data, std::size_t classSize) const {
    TakeBytes(data, TakeWord(data) * classSize);
    std::uint16_t found = 0;
    while (!data.empty()) {
        const auto number = TakeWord(data);
        for (auto left = TakeWord(data); left > 0; --left) {
            if (TakeDWord(data) == SnacKind(family_, subtype_)) found = number;
        }
    }
    return found;
}

void RateLimit::TakeClass(std::string_view& data) {
    // No server averages over more frames; with more a hostile one's levels would overflow.
    constexpr std::uint32_t kWidestWindow = 0xFFFFF;
    class_ = TakeWord(data);
    window_ = std::min(TakeDWord(data), kWidestWindow);
    clear_ = TakeDWord(data);
    TakeBytes(data, 12);
    level_ = TakeDWord(data);
    highest_ = TakeDWord(data);
}

void RateLimit::Read(std::string_view data) {
    for (const auto size : {kLongClass, kShortClass}) {
        try {
            const auto wanted = ClassIn(data, size);
            auto classes = data;
            for (auto left = TakeWord(classes); wanted != 0 && left > 0; --left) {
                auto each = TakeBytes(classes, size);
                TakeClass(each);
                if (class_ == wanted) return;
            }
        } catch (const RuntimeError&) {
            // Not of this size; perhaps of the other.
        }
        *this = RateLimit(family_, subtype_);
    }
}

void RateLimit::ReadChange(std::string_view data) {
    TakeWord(data);  // why
    if (const auto rest = data; class_ != 0 && TakeWord(data) == class_) {
        data = rest;
        TakeClass(data);
    }
}

std::int64_t RateLimit::LevelAfter(std::int64_t now) const {
    return std::min(highest_, (level_ * (window_ - 1) + (now - last_)) / window_);
}

void RateLimit::Count(std::int64_t now) {
    if (window_ > 0 && last_ != 0) level_ = LevelAfter(now);
    last_ = now;
}

bool RateLimit::Allows(std::int64_t now) const {
    return window_ == 0 || last_ == 0 || LevelAfter(now) >= std::min(clear_, highest_);
}
