#include "features/SafeHtml.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/Text.h"

namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

constexpr bool IsLetter(char c) {
    return LowerAscii(c) >= 'a' && LowerAscii(c) <= 'z';
}

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

template <typename Allowed>
bool ConsistsOf(std::string_view text, Allowed allowed) {
    return std::all_of(text.begin(), text.end(), allowed);
}

// "#ff0000", or the name of a colour.
bool IsColour(std::string_view value) {
    return ConsistsOf(value, [](char c) { return IsLetter(c) || IsDigit(c) || c == '#'; });
}

bool IsFontSize(std::string_view value) {
    return ConsistsOf(value, [](char c) { return IsDigit(c) || c == '+' || c == '-'; });
}

bool IsFontFace(std::string_view value) {
    return ConsistsOf(value, [](char c) {
        return IsLetter(c) || IsDigit(c) || c == ' ' || c == ',' || c == '-' || c == '_' || c == '.';
    });
}

bool IsWebAddress(std::string_view value) {
    const auto lower = LowerCase(value.substr(0, 8));
    return (lower.starts_with("http://") || lower.starts_with("https://")) &&
           ConsistsOf(value, [](char c) { return static_cast<unsigned char>(c) > ' ' && c != '`'; });
}

struct AllowedAttribute {
    std::string_view name;
    bool (*isGood)(std::string_view value);
};

struct AllowedTag {
    std::string_view name;
    bool holdsText;  // and so is to be closed
    std::array<AllowedAttribute, 6> attributes;
};

constexpr std::array<AllowedTag, 10> kAllowed = {{
    {"html", true, {}},
    {"body",
     true,
     {{{"bgcolor", IsColour},
       {"text", IsColour},
       {"link", IsColour},
       {"vlink", IsColour},
       {"alink", IsColour}}}},
    {"font",
     true,
     {{{"color", IsColour},
       {"back", IsColour},
       {"size", IsFontSize},
       {"ptsize", IsFontSize},
       {"face", IsFontFace}}}},
    {"b", true, {}},
    {"i", true, {}},
    {"u", true, {}},
    {"s", true, {}},
    {"a", true, {{{"href", IsWebAddress}}}},
    {"br", false, {}},
    {"hr", false, {}},
}};

const AllowedTag* FindTag(const std::string& name) {
    const auto* const found =
        std::find_if(kAllowed.begin(), kAllowed.end(), [&](const auto& tag) { return tag.name == name; });
    return found != kAllowed.end() ? found : nullptr;
}

const AllowedAttribute* FindAttribute(const AllowedTag& tag, std::string_view name) {
    for (const auto& attribute : tag.attributes) {
        if (!attribute.name.empty() && attribute.name == name) return &attribute;
    }
    return nullptr;
}

// Cuts pieces off the front of a tag's inside. No piece holds "<" or ">", since the inside does not.
class Cutter {
 public:
    explicit Cutter(std::string_view text) : rest_(text) {}

    bool AtEnd() const { return rest_.empty(); }
    bool Take(char c) {
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }
    bool SkipBlanks() { return !TakeUntil(rest_.find_first_not_of(kBlanks)).empty(); }
    std::string TakeName() {
        const auto end = std::find_if(rest_.begin(), rest_.end(), [](char c) { return !IsLetter(c); });
        return LowerCase(TakeUntil(static_cast<std::size_t>(end - rest_.begin())));
    }
    // Quoted, or up to the next blank. Nothing for a quote that does not end, and for one inside a bare
    // value.
    bool TakeValue(std::string_view& value) {
        const char quote = rest_.empty() ? ' ' : rest_.front();
        if (quote != '"' && quote != '\'') {
            value = TakeUntil(rest_.find_first_of(kBlanks));
            return !value.empty() && value.find_first_of("\"'=`") == std::string_view::npos;
        }
        rest_.remove_prefix(1);
        const auto end = rest_.find(quote);
        if (end == std::string_view::npos) return false;
        value = TakeUntil(end);
        return Take(quote);
    }

 private:
    std::string_view TakeUntil(std::size_t end) {
        const auto piece = rest_.substr(0, end);
        rest_.remove_prefix(piece.size());
        return piece;
    }

    std::string_view rest_;
};

// A tag as it may stand in the file; `text` is "" for one that is none of ours or malformed.
struct SafeTag {
    std::string text;
    std::string name;
    bool closes = false;
    bool holdsText = false;
};

// Writes what may stay of the attributes; `isWhole` becomes false when something may not. Whether the inside
// reads as attributes at all.
bool ReadAttributes(Cutter& inside, const AllowedTag& tag, std::string& kept, bool& isWhole) {
    for (;;) {
        const bool parted = inside.SkipBlanks();
        if (inside.AtEnd()) return true;
        if (inside.Take('/')) {  // "<br />"
            isWhole = isWhole && inside.AtEnd();
            continue;
        }
        const auto name = inside.TakeName();
        if (!parted || name.empty()) return false;
        std::string_view value;
        inside.SkipBlanks();
        const bool hasValue = inside.Take('=');
        if (hasValue) {
            inside.SkipBlanks();
            if (!inside.TakeValue(value)) return false;
        }
        const auto* const allowed = FindAttribute(tag, name);
        if (allowed == nullptr || !hasValue || !allowed->isGood(value) ||
            value.find('"') != std::string_view::npos) {
            isWhole = false;
        } else {
            kept += ' ' + name + "=\"" + std::string(value) + '"';
        }
    }
}

// `whole` is the tag with its brackets.
SafeTag ReadTag(std::string_view whole) {
    Cutter inside(whole.substr(1, whole.size() - 2));
    SafeTag tag;
    tag.closes = inside.Take('/');
    tag.name = inside.TakeName();
    const auto* const allowed = FindTag(tag.name);
    if (allowed == nullptr) return tag;
    tag.holdsText = allowed->holdsText;
    std::string kept;
    bool isWhole = true;
    if (!ReadAttributes(inside, *allowed, kept, isWhole)) return tag;
    if (tag.closes && !(isWhole && kept.empty())) return tag;
    tag.text = isWhole ? std::string(whole) : '<' + tag.name + kept + '>';
    return tag;
}

}  // namespace

std::string SafeHtml(std::string_view html) {
    std::string safe;
    std::vector<std::string> open;
    for (std::size_t at = 0; at < html.size();) {
        if (html[at] != '<') {
            const auto end = std::min(html.find('<', at), html.size());
            safe += html.substr(at, end - at);
            at = end;
            continue;
        }
        // A tag ends at the next bracket, whatever quotes say; a "<" before it makes it none.
        const auto end = html.find_first_of("<>", at + 1);
        const bool ends = end != std::string_view::npos && html[end] == '>';
        const auto tag = ends ? ReadTag(html.substr(at, end - at + 1)) : SafeTag();
        if (tag.text.empty()) {
            safe += "&lt;";
            ++at;
            continue;
        }
        at = end + 1;
        if (tag.closes && tag.holdsText) {
            const auto last = std::find(open.rbegin(), open.rend(), tag.name);
            if (last == open.rend()) continue;
            open.erase(std::next(last).base());
        } else if (tag.closes) {
            continue;
        } else if (tag.holdsText) {
            open.push_back(tag.name);
        }
        safe += tag.text;
    }
    for (auto name = open.rbegin(); name != open.rend(); ++name) safe += "</" + *name + '>';
    return safe;
}

std::string HtmlText(std::string_view text) {
    std::string html;
    for (const char c : text) {
        if (c == '<')
            html += "&lt;";
        else if (c == '>')
            html += "&gt;";
        else if (c == '&')
            html += "&amp;";
        else if (c == '\n')
            html += "<br>";
        else
            html += c;
    }
    return html;
}
