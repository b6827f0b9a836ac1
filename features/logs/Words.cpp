#include "features/logs/Words.h"

#include <algorithm>

#include "base/Unicode.h"

namespace {

enum class Kind { Separator, Letter, WordByItself };

constexpr bool IsBetween(char32_t c, char32_t first, char32_t last) {
    return c >= first && c <= last;
}

Kind KindOf(char32_t c) {
    if (c < 0x80) {
        const bool isLetter = IsBetween(c, 'a', 'z') || IsBetween(c, 'A', 'Z') || IsBetween(c, '0', '9');
        return isLetter ? Kind::Letter : Kind::Separator;
    }
    if (c < 0xC0) return c == 0xAA || c == 0xB5 || c == 0xBA ? Kind::Letter : Kind::Separator;
    if (c == 0xD7 || c == 0xF7) return Kind::Separator;
    if (IsBetween(c, 0x2000, 0x206F) || IsBetween(c, 0x3000, 0x303F)) return Kind::Separator;
    if (IsBetween(c, 0xFE00, 0xFE0F) || c == 0xFFFD) return Kind::Separator;  // how an emoji is to be drawn
    if (IsBetween(c, 0x2190, 0x2BFF) || IsBetween(c, 0x2E80, 0xA4CF)) return Kind::WordByItself;
    if (IsBetween(c, 0xF900, 0xFAFF) || c >= 0x1F000) return Kind::WordByItself;
    return Kind::Letter;
}

// Lower case of Latin, Greek and Cyrillic, where one character stands for one.
char32_t Lower(char32_t c) {
    if (IsBetween(c, 'A', 'Z') || (IsBetween(c, 0xC0, 0xDE) && c != 0xD7)) return c + 0x20;
    if (IsBetween(c, 0x100, 0x137) || IsBetween(c, 0x14A, 0x177)) return c | 1;
    if (IsBetween(c, 0x139, 0x148) || IsBetween(c, 0x179, 0x17E)) return c % 2 == 1 ? c + 1 : c;
    if (IsBetween(c, 0x391, 0x3A9) || IsBetween(c, 0x410, 0x42F)) return c + 0x20;
    if (IsBetween(c, 0x400, 0x40F)) return c + 0x50;
    return c;
}

}  // namespace

bool WordCutter::Next() {
    word_.clear();
    while (end_ < text_.size()) {
        const auto at = end_;
        auto rest = text_.substr(at);
        const auto c = TakeUtf8(rest).value_or(0xFFFD);
        end_ = text_.size() - rest.size();
        const auto kind = KindOf(c);
        if (kind != Kind::Letter && !word_.empty()) {
            end_ = at;
            return true;
        }
        if (kind == Kind::Separator) continue;
        if (word_.empty()) begin_ = at;
        if (word_.size() < kMaxWordBytes) AppendUtf8(word_, Lower(c));
        if (kind == Kind::WordByItself) return true;
    }
    return !word_.empty();
}

Question::Question(std::string_view text) {
    for (WordCutter cutter(text); cutter.Next();) words_.push_back(cutter.Word());
}

std::vector<Question::Mark> Question::Find(std::string_view line) const {
    std::vector<Mark> marks;
    std::vector<bool> found(words_.size());
    for (WordCutter cutter(line); cutter.Next();) {
        bool isAsked = false;
        for (std::size_t i = 0; i < words_.size(); ++i) {
            if (!cutter.Word().starts_with(words_[i])) continue;
            found[i] = true;
            isAsked = true;
        }
        if (isAsked) marks.push_back({cutter.Begin(), cutter.End()});
    }
    if (std::find(found.begin(), found.end(), false) != found.end()) marks.clear();
    return marks;
}
