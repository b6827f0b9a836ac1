// The stream form of a menu. Numbers are big-endian.
//
//   offset  width  field
//   0       4      "WPMN"
//   4       1      version, 1
//   5       1      0: the system's colours, 1: eight colours of three bytes (red, green, blue) follow
//   then    2      number of entries
//   then, for each entry, in the order of the menu, parents before their entries:
//   0       2      the parent's number in the stream, counted from 1; 0 at the top
//   2       1      kind: 0 entry, 1 separator, 2 header
//   3       1      flags: 1 checked, 2 enabled, 4 default; others 0
//   4       4      item data
//   8       4      icon index, -1 for none
//   12      2 + n  caption, after its length
//   then    2 + n  key, after its length
//
// Nothing follows the last entry.

#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

#include "base/RuntimeError.h"
#include "ui/popupmenu/cPopupMenu.h"

namespace {

constexpr std::string_view kMagic = "WPMN";
constexpr unsigned kVersion = 1;
constexpr unsigned kChecked = 1, kEnabled = 2, kDefault = 4;

// The order of the colours in the stream.
constexpr std::array kColourFields{&os::MenuColours::background,   &os::MenuColours::text,
                                   &os::MenuColours::disabledText, &os::MenuColours::selected,
                                   &os::MenuColours::selectedText, &os::MenuColours::separator,
                                   &os::MenuColours::header,       &os::MenuColours::headerText};

[[noreturn]] void Refuse(const std::string& what) {
    throw RuntimeError(ErrorNumber::InvalidArgument, "The stored menu cannot be read: " + what);
}

}  // namespace

class cPopupMenu::Writer {
 public:
    void Number(std::uint32_t number, int width) {
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
            bytes_ += static_cast<char>(static_cast<unsigned char>(number >> shift));
    }
    void Text(std::string_view text) {
        Number(Width16(text.size()), 2);
        bytes_ += text;
    }
    void Raw(std::string_view bytes) { bytes_ += bytes; }
    std::string Take() { return std::move(bytes_); }

    static std::uint32_t Width16(std::size_t number) {
        if (number > 0xFFFF) ThrowOverflow();
        return static_cast<std::uint32_t>(number);
    }

 private:
    std::string bytes_;
};

class cPopupMenu::Reader {
 public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    std::string_view Raw(std::size_t width) {
        if (rest_.size() < width) Refuse("it ends too early");
        const auto taken = rest_.substr(0, width);
        rest_.remove_prefix(width);
        return taken;
    }
    std::uint32_t Number(std::size_t width) {
        std::uint32_t number = 0;
        for (const char byte : Raw(width)) number = number << 8 | static_cast<unsigned char>(byte);
        return number;
    }
    std::string Text() { return std::string(Raw(Number(2))); }
    std::optional<os::MenuColours> Colours() {
        const auto scheme = Number(1);
        if (scheme == 0) return std::nullopt;
        if (scheme != 1) Refuse("its colours are of an unknown kind");
        os::MenuColours colours{};
        for (const auto field : kColourFields) colours.*field = Number(3);
        return colours;
    }
    bool AtEnd() const { return rest_.empty(); }

 private:
    std::string_view rest_;
};

std::string cPopupMenu::Store() const {
    Writer writer;
    writer.Raw(kMagic);
    writer.Number(kVersion, 1);
    writer.Number(colours_ ? 1 : 0, 1);
    if (colours_) {
        for (const auto field : kColourFields) writer.Number((*colours_).*field, 3);
    }
    writer.Number(Writer::Width16(items_.size()), 2);

    std::map<std::int32_t, std::uint32_t> numbers{{0, 0}};
    for (const auto& item : items_) {
        writer.Number(numbers.at(item.parent), 2);
        writer.Number(static_cast<std::uint32_t>(item.kind), 1);
        writer.Number(
            (item.checked ? kChecked : 0) | (item.enabled ? kEnabled : 0) | (item.isDefault ? kDefault : 0),
            1);
        writer.Number(static_cast<std::uint32_t>(item.itemData), 4);
        writer.Number(static_cast<std::uint32_t>(item.icon), 4);
        writer.Text(item.caption);
        writer.Text(item.key);
        numbers.emplace(item.index, static_cast<std::uint32_t>(numbers.size()));
    }
    return writer.Take();
}

cPopupMenu::Item cPopupMenu::ReadItem(Reader& reader, std::int32_t number) {
    const auto parent = static_cast<std::int32_t>(reader.Number(2));
    if (parent >= number) Refuse("an entry stands before its parent");
    const auto kind = reader.Number(1);
    if (kind > static_cast<std::uint32_t>(os::MenuEntryKind::Header)) Refuse("an entry is of no known kind");
    const auto flags = reader.Number(1);
    if ((flags & ~(kChecked | kEnabled | kDefault)) != 0) Refuse("an entry has unknown flags");
    const auto itemData = static_cast<std::int32_t>(reader.Number(4));
    const auto icon = static_cast<std::int32_t>(reader.Number(4));
    auto caption = reader.Text();
    auto key = reader.Text();
    return {.index = number,
            .parent = parent,
            .kind = static_cast<os::MenuEntryKind>(kind),
            .caption = std::move(caption),
            .key = std::move(key),
            .itemData = itemData,
            .icon = icon,
            .checked = (flags & kChecked) != 0,
            .enabled = (flags & kEnabled) != 0,
            .isDefault = (flags & kDefault) != 0};
}

void cPopupMenu::Restore(std::string_view stream) {
    Reader reader(stream);
    if (reader.Raw(kMagic.size()) != kMagic) Refuse("it is no menu");
    if (reader.Number(1) != kVersion) Refuse("it is of another version");

    // Read into a menu of its own: the rules for adding entries hold for stored ones too, and this menu
    // stays as it is until all of the stream has been understood.
    cPopupMenu read;
    read.colours_ = reader.Colours();
    const auto count = static_cast<std::int32_t>(reader.Number(2));
    std::set<std::int32_t> menusWithDefault;
    for (std::int32_t number = 1; number <= count; ++number) {
        auto item = ReadItem(reader, number);
        const auto parent = item.parent;
        if (parent != 0 && read.items_[static_cast<std::size_t>(parent - 1)].kind != os::MenuEntryKind::Item)
            Refuse("a separator or header has a sub-menu");
        if (item.isDefault && !menusWithDefault.insert(parent).second)
            Refuse("a menu has two default entries");
        read.items_.push_back(std::move(item));
    }
    if (!reader.AtEnd()) Refuse("something follows its end");

    items_ = std::move(read.items_);
    lastIndex_ = count;
    colours_ = read.colours_;
}
