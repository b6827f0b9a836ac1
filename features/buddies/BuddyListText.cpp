// The buddy list as text, and as what other programs read.
//
// A line of the text, fields parted by one blank: kind, name in quotes, then "group N", "item N", the alias
// in quotes (for the reader alone) and the attributes as hexadecimal digits, each where there is one. Kinds
// without a name of their own are "kind-N".
#include <algorithm>
#include <array>
#include <map>

#include "base/RuntimeError.h"
#include "features/SafeHtml.h"
#include "features/buddies/BuddyList.h"

namespace {

constexpr std::array<const char*, 4> kKinds = {"buddy", "group", "permit", "deny"};
constexpr std::string_view kHexDigits = "0123456789abcdef";

std::string KindText(std::uint16_t kind) {
    return kind < kKinds.size() ? kKinds[kind] : "kind-" + std::to_string(kind);
}

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(c);
        text += kHexDigits[byte >> 4];
        text += kHexDigits[byte & 0xF];
    }
    return text;
}

// Quotes, backslashes and control bytes stand behind a backslash, the last as two hexadecimal digits.
std::string Quoted(std::string_view name) {
    std::string text = "\"";
    for (const char c : name) {
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (static_cast<std::uint8_t>(c) < 0x20 || c == 0x7F) {
            text += "\\x" + Hex({&c, 1});
        } else {
            text += c;
        }
    }
    return text + '"';
}

// Takes fields off the front of a line; throws where the line is something else.
class LineReader {
 public:
    explicit LineReader(std::string_view line) : rest_(line) {}

    bool AtEnd() const { return rest_.empty(); }
    char Front() const { return rest_.empty() ? '\0' : rest_.front(); }

    std::string_view Word() {
        const auto word = rest_.substr(0, rest_.find(' '));
        if (word.empty()) ThrowInvalidArgument();
        Drop(word.size());
        return word;
    }

    std::uint16_t Number() {
        std::uint32_t number = 0;
        for (const char digit : Word()) {
            if (digit < '0' || digit > '9') ThrowInvalidArgument();
            number = number * 10 + static_cast<std::uint32_t>(digit - '0');
            if (number > 0xFFFF) ThrowInvalidArgument();
        }
        return static_cast<std::uint16_t>(number);
    }

    std::string QuotedText() {
        std::string text;
        std::size_t at = 1;
        if (Front() != '"') ThrowInvalidArgument();
        for (; at < rest_.size() && rest_[at] != '"'; ++at) {
            if (rest_[at] != '\\') {
                text += rest_[at];
            } else if (rest_.substr(++at).starts_with('x')) {
                text += Bytes(rest_.substr(at + 1, 2));
                at += 2;
            } else {
                text += rest_.substr(at, 1);
            }
        }
        if (at >= rest_.size()) ThrowInvalidArgument();
        Drop(at + 1);
        return text;
    }

    static std::string Bytes(std::string_view hex) {
        std::string bytes;
        if (hex.size() % 2 != 0) ThrowInvalidArgument();
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            const auto high = kHexDigits.find(hex[i]);
            const auto low = kHexDigits.find(hex[i + 1]);
            if (high == std::string_view::npos || low == std::string_view::npos) ThrowInvalidArgument();
            bytes += static_cast<char>(high << 4 | low);
        }
        return bytes;
    }

 private:
    // A field and the blank behind it.
    void Drop(std::size_t size) {
        rest_.remove_prefix(size);
        if (!rest_.empty() && rest_.front() != ' ') ThrowInvalidArgument();
        rest_.remove_prefix(std::min<std::size_t>(1, rest_.size()));
    }

    std::string_view rest_;
};

BuddyItem ItemFromLine(std::string_view line) {
    LineReader reader(line);
    BuddyItem item;
    const auto kind = reader.Word();
    const auto* const known = std::find(kKinds.begin(), kKinds.end(), kind);
    if (known != kKinds.end()) {
        item.kind = static_cast<std::uint16_t>(known - kKinds.begin());
    } else if (kind.starts_with("kind-")) {
        item.kind = LineReader(kind.substr(5)).Number();
    } else {
        ThrowInvalidArgument();
    }
    item.name = reader.QuotedText();
    while (!reader.AtEnd()) {
        const auto field = reader.Word();
        if (field == "group") {
            item.group = reader.Number();
        } else if (field == "item") {
            item.item = reader.Number();
        } else if (field == "alias") {
            reader.QuotedText();
        } else if (field == "raw") {
            item.attributes = LineReader::Bytes(reader.Word());
        } else {
            ThrowInvalidArgument();
        }
    }
    constexpr std::size_t kMaxLength = 0xFFFF;  // what the wire can tell
    if (item.name.size() > kMaxLength || item.attributes.size() > kMaxLength) ThrowInvalidArgument();
    return item;
}

std::string CsvField(std::string_view text) {
    std::string field = "\"";
    for (const char c : text) field += c == '"' ? std::string("\"\"") : std::string(1, c);
    return field + '"';
}

// The groups in their order, each with its buddies.
template <typename OnGroup, typename OnBuddy>
void Walk(const BuddyList& list, OnGroup onGroup, OnBuddy onBuddy) {
    std::map<std::uint16_t, std::vector<const BuddyItem*>> buddies;
    for (const auto& item : list) {
        if (item.kind == BuddyItem::Buddy) buddies[item.group].push_back(&item);
    }
    for (const auto& group : list) {
        if (group.kind != BuddyItem::Group || group.IsRoot()) continue;
        onGroup(group);
        for (const auto* buddy : buddies[group.group]) onBuddy(group, *buddy);
    }
}

}  // namespace

std::string TextOf(const BuddyList& list, std::string_view heading) {
    std::string text = "# " + std::string(heading) + "\n";
    for (const auto& item : list) {
        text += KindText(item.kind) + ' ' + Quoted(item.name) + " group " + std::to_string(item.group);
        if (item.item != 0) text += " item " + std::to_string(item.item);
        if (const auto alias = item.Alias(); !alias.empty()) text += " alias " + Quoted(alias);
        if (!item.attributes.empty()) text += " raw " + Hex(item.attributes);
        text += '\n';
    }
    return text;
}

BuddyList ListFromText(std::string_view text) {
    BuddyList list;
    for (std::size_t number = 1; !text.empty(); ++number) {
        auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty() || line.starts_with('#')) continue;
        try {
            if (list.size() == kMaxBuddyItems) ThrowInvalidArgument();
            list.push_back(ItemFromLine(line));
        } catch (const RuntimeError&) {
            throw RuntimeError(ErrorNumber::InvalidArgument,
                               "Line " + std::to_string(number) + " is no entry of a buddy list");
        }
    }
    return list;
}

std::string CsvOf(const BuddyList& list) {
    std::string csv = "group,name,alias\r\n";
    Walk(
        list, [](const auto&) {},
        [&](const auto& group, const auto& buddy) {
            csv += CsvField(group.name) + ',' + CsvField(buddy.name) + ',' + CsvField(buddy.Alias()) + "\r\n";
        });
    return csv;
}

std::string HtmlOf(const BuddyList& list, std::string_view title) {
    std::string html =
        "<html><head><title>" + HtmlText(title) + "</title></head><body><h1>" + HtmlText(title) + "</h1>\r\n";
    bool open = false;
    Walk(
        list,
        [&](const auto& group) {
            if (open) html += "</ul>\r\n";
            html += "<h2>" + HtmlText(group.name) + "</h2><ul>\r\n";
            open = true;
        },
        [&](const auto&, const auto& buddy) {
            const auto alias = buddy.Alias();
            html += "<li>" + HtmlText(buddy.name) + (alias.empty() ? "" : " (" + HtmlText(alias) + ")") +
                    "</li>\r\n";
        });
    return html + (open ? "</ul>" : "") + "</body></html>\r\n";
}
