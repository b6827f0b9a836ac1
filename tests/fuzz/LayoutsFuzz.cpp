// Frames by the table of layouts. Any bytes: reading ends, its parts lie within the payload and within each
// other. Frames that fit: with aliases at work they fit afterwards, and say what they would say had they been
// written so.
#include <cstdint>
#include <functional>
#include <iterator>

#include "core/wire/Blocks.h"
#include "core/wire/Describe.h"
#include "core/wire/Snacs.h"
#include "features/modSNReplace.h"
#include "tests/fuzz/Check.h"
#include "tests/unit/Messages.h"

namespace {

// Writes frames by the table of layouts: every kind, with a name wherever one can stand.
class FrameWriter {
 public:
    // `upto` gives a number from 0 to the one it is given: how many of what may be repeated, and whether a
    // TLV is there.
    FrameWriter(std::string name, std::function<std::size_t(std::size_t)> upto)
        : name_(std::move(name)), upto_(std::move(upto)) {}

    static std::uint8_t Channel(const wire::Snac& snac) {
        return snac.family == wire::kNoSnac ? static_cast<std::uint8_t>(snac.subtype) : std::uint8_t{2};
    }

    ByteString Payload(const wire::Snac& snac) {
        const auto data = Fields(snac.fields.data(), snac.fields.data() + snac.fields.size());
        if (snac.family == wire::kNoSnac) return data;
        const bool hasVersion = upto_(1) == 1;
        const auto version = Tlv(1, "00 04"_hex) + Tlv(0x7777, Named(name_));
        return WordToStr(snac.family) + WordToStr(snac.subtype) + (hasVersion ? "80 00"_hex : "00 00"_hex) +
               "EE EE EE EE"_hex + (hasVersion ? Word(version.size()) + version : "") + data;
    }

 private:
    ByteString Fields(const wire::Field* first, const wire::Field* last) {
        ByteString bytes;
        for (; first != last && first->name != nullptr; ++first) bytes += One(*first);
        return bytes;
    }

    ByteString One(const wire::Field& field) {
        if (field.shape == wire::Shape::Counted || field.shape == wire::Shape::CountedTlvs) {
            const auto count = upto_(2);
            ByteString bytes = Number(count, field.prefix);
            for (std::size_t i = 0; i < count; ++i) {
                bytes += field.shape == wire::Shape::Counted ? Fields(field.begin(), field.end())
                                                             : AnyTlv(field, upto_(field.innerCount));
            }
            return bytes;
        }
        const auto contents = Contents(field);
        return field.prefix != 0 ? Number(contents.size(), field.prefix) + contents : contents;
    }

    ByteString Contents(const wire::Field& field) {
        ByteString bytes;
        switch (field.shape) {
            case wire::Shape::Number:
            case wire::Shape::Address:
                return ByteString(field.width != 0 ? field.width : 4, '\xEE');
            case wire::Shape::Bytes:
                // A cookie may hold a name.
                if (field.width == wire::kCapabilitySize) return capability_ = AnyCapability();
                return field.width != 0 ? ByteString(field.width, '\xEE') : "\xEE" + Named(name_) + "\xEE";
            case wire::Shape::Text:
                // Only behind a length is a name found.
                return field.prefix != 0 || field.type != 0 ? name_ : "\n" + Named(name_) + ".";
            case wire::Shape::Group:
                return Fields(field.begin(), field.end());
            case wire::Shape::Each:
                for (std::size_t i = upto_(2); i > 0; --i) bytes += Fields(field.begin(), field.end());
                return bytes;
            default:
                for (std::size_t i = 0; i <= field.innerCount; ++i) {
                    if (upto_(1) == 1) bytes += AnyTlv(field, i);
                }
                return bytes;
        }
    }

    // The known TLV of that number, or one that nobody knows.
    ByteString AnyTlv(const wire::Field& list, std::size_t index) {
        if (index == list.innerCount) return Tlv(0x7777, "\xEE" + Named(name_));
        const auto& field = list.begin()[index];
        if (field.only != nullptr && capability_ != ByteString(field.only, wire::kCapabilitySize)) return {};
        // Behind its special meanings stands what a type is otherwise.
        for (const auto* before = list.begin(); before != &field; ++before) {
            if (before->type == field.type && capability_ == ByteString(before->only, wire::kCapabilitySize))
                return {};
        }
        return Tlv(field.type, One(field));
    }

    static ByteString Number(std::size_t number, std::size_t width) {
        return width == 1 ? ByteToStr(static_cast<std::int32_t>(number)) : Word(number);
    }

    // One that decides what a rendezvous is about, or another.
    ByteString AnyCapability() {
        constexpr const char* kKnown[] = {wire::kChatCapability, wire::kFileCapability, wire::kIconCapability,
                                          wire::kListCapability};
        const auto index = upto_(std::size(kKnown));
        if (index == std::size(kKnown)) return ByteString(wire::kCapabilitySize, '\xEE');
        return {kKnown[index], wire::kCapabilitySize};
    }

    std::string name_;
    ByteString capability_;
    std::function<std::size_t(std::size_t)> upto_;
};

void CheckParts(std::uint8_t channel, const ByteString& payload) {
    const auto parts = wire::Read(channel, payload);
    Check(parts.parts.size() <= 2 * payload.size() + 2, "parts in proportion to the bytes");
    std::vector<const wire::Part*> around;
    for (const auto& part : parts.parts) {
        Check(part.offset <= payload.size() && part.size <= payload.size() - part.offset,
              "a part of the payload");
        Check(part.lengthWidth <= part.offset, "a length stands before it");
        Check(part.depth <= around.size(), "one deeper at most");
        around.resize(part.depth);
        if (parts.fits && !around.empty()) {
            Check(part.offset >= around.back()->offset &&
                      part.offset + part.size <= around.back()->offset + around.back()->size,
                  "a part of what is around it");
        }
        around.push_back(&part);
    }
    for (std::size_t i = 0; i < parts.parts.size(); ++i) wire::ValueOf(payload, parts, i);
    Check(wire::Summary(channel, payload, parts).size() < 1000, "a summary is short");
    for (const auto& [offset, size] : wire::Secrets(channel, payload, parts))
        Check(offset <= payload.size() && size <= payload.size() - offset, "secrets of the payload");
}

// As the relay does it; what the rewriting leaves must fit when it fitted before.
void CheckAliases(const ReplacementList& list, std::uint8_t channel, const ByteString& payload) {
    const auto before = wire::Read(channel, payload);
    for (const auto direction : {Direction::ToServer, Direction::ToClient}) {
        ByteString rewritten;
        if (!modSNReplace::ReplaceScreenNames(list, direction, channel, payload, rewritten) || !before.fits)
            continue;
        const auto after = wire::Read(channel, rewritten);
        Check(after.fits && after.parts.size() == before.parts.size(), "a frame that fitted fits");
        CheckParts(channel, rewritten);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const ReplacementList list(
        std::vector<Replacement>{{"asdf1234", "Fred"}, {"ab", "c"}, {"Bob", "a \x04name"}});
    if (size < 2) return 0;
    const auto channel = static_cast<std::uint8_t>(bytes[0] % 6);
    const ByteString payload(bytes + 1, bytes + size);
    CheckParts(channel, payload);
    CheckAliases(list, channel, payload);

    // The same bytes as choices of the writer.
    const auto& snac = wire::Snacs()[bytes[0] % wire::Snacs().size()];
    const auto written = [&](const std::string& name) {
        std::size_t next = 0;
        return FrameWriter(name,
                           [&](std::size_t most) {
                               return next + 1 < size ? bytes[++next] % (most + 1) : std::size_t{0};
                           })
            .Payload(snac);
    };
    const auto kind = FrameWriter::Channel(snac);
    const auto fred = written("Fred"), asdf = written("asdf1234");
    if (fred.size() > 0xFFFF || asdf.size() > 0xFFFF) return 0;
    CheckParts(kind, fred);
    Check(wire::Read(kind, fred).fits, "what is written by the table fits");
    CheckAliases(list, kind, fred);
    static const ReplacementList one(std::vector<Replacement>{{"asdf1234", "Fred"}});
    ByteString rewritten;
    if (!modSNReplace::ReplaceScreenNames(one, Direction::ToServer, kind, fred, rewritten)) rewritten = fred;
    Check(rewritten == asdf, "as if written with the other name");
    return 0;
}
