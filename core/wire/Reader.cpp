#include "core/wire/Reader.h"

#include <algorithm>

#include "core/wire/Blocks.h"
#include "core/wire/Snacs.h"

namespace wire {
namespace {

constexpr std::uint8_t kSnacChannel = 2;
constexpr std::size_t kSnacHeaderSize = 10;
constexpr std::size_t kMaxNumberBytes = 8;
constexpr std::size_t kTlvHeaderSize = 4;

constexpr Field kUnknownTlv = Rest("unknown");
constexpr Field kMore = Rest("more");

bool IsList(Shape shape) {
    return shape == Shape::Each || shape == Shape::Counted;
}
bool IsCounted(Shape shape) {
    return shape == Shape::Counted || shape == Shape::CountedTlvs;
}

const Field& TlvOf(const Field& known, std::uint64_t type, std::string_view capability) {
    const auto* const found = std::ranges::find_if(known, [=](const Field& field) {
        return field.type == type &&
               (field.only == nullptr || capability == std::string_view(field.only, kCapabilitySize));
    });
    return found != known.end() ? *found : kUnknownTlv;
}

// Reads front to back. What returns false has met a field that does not fit, at position_.
class Reader {
 public:
    Reader(std::string_view bytes, Parts& result) : bytes_(bytes), parts_(result.parts) {}

    std::size_t Position() const { return position_; }

    // The fields in a block that ends at `end`; it may end between two of them.
    bool Fields(const Field* first, const Field* last, std::size_t end, std::uint8_t depth) {
        for (const auto* field = first; field != last && field->name != nullptr && position_ < end; ++field) {
            if (!One(*field, end, depth)) return false;
        }
        return true;
    }

    // What is left of the block.
    void More(std::size_t end, std::uint8_t depth) {
        if (position_ < end) Add(kMore, end - position_, depth, 0);
        position_ = end;
    }

 private:
    bool One(const Field& field, std::size_t end, std::uint8_t depth) {
        if (end - position_ < field.prefix) return false;
        if (field.prefix == 0) return Contents(field, 0, end, depth, 0);
        const auto number = static_cast<std::size_t>(NumberAt(bytes_, position_, field.prefix));
        if (IsCounted(field.shape)) {
            position_ += field.prefix;
            return Contents(field, number, end, depth, 0);
        }
        if (end - position_ - field.prefix < number) return false;
        position_ += field.prefix;
        const auto blockEnd = position_ + number;
        if (!Contents(field, 0, blockEnd, depth, field.prefix)) return false;
        More(blockEnd, static_cast<std::uint8_t>(depth + 1));
        return true;
    }

    // The field itself and what it is made of, as far as `end`. Lists of groups are parts only as their
    // groups.
    bool Contents(const Field& field, std::size_t count, std::size_t end, std::uint8_t depth,
                  std::uint8_t lengthWidth) {
        if (IsList(field.shape)) return Groups(field, count, end, depth);
        const auto size = SizeOf(field, end);
        if (size > end - position_) return false;
        const auto index = parts_.size();
        Add(field, size, depth, lengthWidth);
        const auto inside = static_cast<std::uint8_t>(depth + 1);
        switch (field.shape) {
            case Shape::Group:
                if (!Fields(field.begin(), field.end(), end, inside)) return false;
                break;
            case Shape::Tlvs:
                while (position_ < end) {
                    if (!OneTlv(field, end, inside)) return false;
                }
                break;
            case Shape::CountedTlvs:
                for (; count > 0; --count) {
                    if (!OneTlv(field, end, inside)) return false;
                }
                break;
            default:
                if (field.width == kCapabilitySize) capability_ = bytes_.substr(position_, size);
                position_ += size;
                break;
        }
        // A block with a length is all of its length; one without ends with its last field.
        if (field.inner != nullptr)
            parts_[index].size = (lengthWidth != 0 ? end : position_) - parts_[index].offset;
        return true;
    }

    bool Groups(const Field& field, std::size_t count, std::size_t end, std::uint8_t depth) {
        const bool isCounted = IsCounted(field.shape);
        for (std::size_t i = 0; isCounted ? i < count : position_ < end; ++i) {
            if (position_ == end) return false;
            const auto index = parts_.size();
            const bool isBlock = field.innerCount > 1;
            if (isBlock) Add(field, 0, depth, 0);
            const auto inside = static_cast<std::uint8_t>(depth + (isBlock ? 1 : 0));
            const auto start = position_;
            if (!Fields(field.begin(), field.end(), end, inside) || position_ == start) return false;
            if (isBlock) parts_[index].size = position_ - start;
        }
        return true;
    }

    bool OneTlv(const Field& known, std::size_t end, std::uint8_t depth) {
        if (end - position_ < kTlvHeaderSize) return false;
        const auto size = static_cast<std::size_t>(NumberAt(bytes_, position_ + 2, 2));
        if (end - position_ - kTlvHeaderSize < size) return false;
        const auto& field = TlvOf(known, NumberAt(bytes_, position_, 2), capability_);
        position_ += kTlvHeaderSize;
        const auto index = parts_.size();
        const auto valueEnd = position_ + size;
        if (!Value(field, valueEnd, depth)) {
            parts_.resize(index);
            position_ = valueEnd - size;
            Add(field, size, depth, 2);
            parts_.back().shape = Shape::Bytes;
        }
        position_ = valueEnd;
        return true;
    }

    bool Value(const Field& field, std::size_t end, std::uint8_t depth) {
        const auto inside = static_cast<std::uint8_t>(depth + 1);
        if (IsList(field.shape)) {
            Add(field, end - position_, depth, 2);
            return Groups(field, 0, end, inside);
        }
        if (!Contents(field, 0, end, depth, 2)) return false;
        if (field.inner == nullptr) return position_ == end;
        More(end, inside);
        return true;
    }

    // Of a value without parts; a number without a width of its own has its block's.
    std::size_t SizeOf(const Field& field, std::size_t end) const {
        if (field.inner != nullptr) return 0;
        if (field.width != 0) return field.width;
        const auto rest = end - position_;
        return field.shape == Shape::Number ? std::min(rest, kMaxNumberBytes) : rest;
    }

    void Add(const Field& field, std::size_t size, std::uint8_t depth, std::uint8_t lengthWidth) {
        parts_.push_back({&field, position_, size, depth, lengthWidth, field.shape});
    }

    std::string_view bytes_;
    std::vector<Part>& parts_;
    std::size_t position_ = 0;
    std::string_view capability_;  // the last that was read
};

Parts ReadAs(const Snac* snac, std::string_view payload) {
    Parts result;
    result.snac = snac;
    Reader reader(payload, result);
    const auto end = payload.size();
    const bool isSnac = snac == nullptr || snac->family != kNoSnac;
    result.fits = snac != nullptr;
    if (isSnac) {
        reader.Fields(std::begin(kSnacHeader), std::end(kSnacHeader), end, 0);
        if (NumberAt(payload, 4, 2) & kHasVersion)
            result.fits &= reader.Fields(std::begin(kVersionBlock), std::end(kVersionBlock), end, 0);
    }
    if (result.fits)
        result.fits = reader.Fields(snac->fields.data(), snac->fields.data() + snac->fields.size(), end, 0);
    result.readTo = reader.Position();
    if (result.fits) reader.More(end, 0);
    return result;
}

}  // namespace

Parts Read(std::uint8_t channel, std::string_view payload) {
    const bool isSnac = channel == kSnacChannel;
    if (isSnac && payload.size() < kSnacHeaderSize) return {};
    const auto rows = isSnac ? SnacsOf(static_cast<std::uint16_t>(NumberAt(payload, 0, 2)),
                                       static_cast<std::uint16_t>(NumberAt(payload, 2, 2)))
                             : SnacsOf(kNoSnac, channel);
    if (rows.empty()) return isSnac ? ReadAs(nullptr, payload) : Parts{};
    for (const auto& row : rows) {
        auto read = ReadAs(&row, payload);
        if (read.fits || &row == &rows.back()) return read;
    }
    return {};
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(offset, width))
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

}  // namespace wire
