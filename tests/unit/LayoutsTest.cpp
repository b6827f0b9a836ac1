// The table of layouts, and what reads frames by it.
#include <gtest/gtest.h>

#include <map>

#include "core/wire/Describe.h"
#include "core/wire/Snacs.h"
#include "tests/unit/Messages.h"
#include "tests/unit/wire_md.h"

namespace {

std::vector<std::string> Lines(const ByteString& payload) {
    std::vector<std::string> lines;
    const auto parts = wire::Read(2, payload);
    for (std::size_t i = 0; i < parts.parts.size(); ++i) {
        const auto& part = parts.parts[i];
        lines.push_back(std::string(part.depth, ' ') + wire::NameOf(part) + " " +
                        std::to_string(part.offset) + "+" + std::to_string(part.size) + " " +
                        wire::ValueOf(payload, parts, i));
    }
    return lines;
}

// The table as docs/wire.md shows it.
class LayoutTableWriter {
 public:
    std::string Write() {
        std::string text = R"(## Every SNAC

Made from the table in `core/wire/`. In brackets: the width in bytes; 1+n is a length of one byte and what it
counts, "rest" is what is left. A block is written out where it stands for the first time.
)";
        std::uint32_t family = 0xFFFFFFFF;
        for (const auto& snac : wire::Snacs()) {
            if (snac.family != family) {
                family = snac.family;
                text += family == wire::kNoSnac
                            ? std::string("\n### Other channels\n\n| channel |")
                            : "\n### " + Hex(family) + ": " + wire::FamilyName(snac.family) + "\n\n| SNAC |";
                text += " what it is | data |\n|---|---|---|\n";
            }
            where_ = family == wire::kNoSnac ? "channel " + std::to_string(snac.subtype)
                                             : "(" + Hex(family) + "," + Hex(snac.subtype) + ")";
            text += "| " + where_ + " | " + snac.name + " | " +
                    Fields(snac.fields.data(), snac.fields.data() + snac.fields.size()) + " |\n";
        }
        return text;
    }

 private:
    static std::string Hex(std::uint32_t number) {
        std::string text;
        for (int shift = number > 0xFF ? 12 : 4; shift >= 0; shift -= 4)
            text += "0123456789ABCDEF"[number >> shift & 0xF];
        return text;
    }

    std::string Fields(const wire::Field* first, const wire::Field* last) {
        std::string text;
        for (; first != last && first->name != nullptr; ++first)
            text += (text.empty() ? "" : ", ") + One(*first);
        return text.empty() ? "none" : text;
    }

    std::string One(const wire::Field& field) {
        const std::string name = field.name;
        const auto prefix = std::to_string(field.prefix);
        switch (field.shape) {
            case wire::Shape::Group:
                return name + " " + Inside(field);
            case wire::Shape::Each:
                return "each " + name + (field.innerCount > 1 ? " " + Inside(field) : Width(field.inner[0]));
            case wire::Shape::Counted:
                return "count (" + prefix + "), each " + name + " " + Inside(field);
            case wire::Shape::Tlvs:
                return name + ": " + (field.prefix != 0 ? "length (" + prefix + "), " : "") + "TLVs " +
                       Inside(field);
            case wire::Shape::CountedTlvs:
                return name + ": count (" + prefix + "), TLVs " + Inside(field);
            default:
                return name + Width(field) + (field.isSecret ? " *secret*" : "");
        }
    }

    static std::string Width(const wire::Field& field) {
        if (field.prefix != 0) return " (" + std::to_string(field.prefix) + "+n)";
        if (field.width != 0)
            return " (" + std::to_string(field.width) + (field.isLittle ? ", low byte first)" : ")");
        return field.type != 0 ? "" : " (rest)";
    }

    std::string Inside(const wire::Field& field) {
        const auto [known, isNew] = seen_.try_emplace(field.inner, where_);
        if (!isNew) return "as in " + known->second;
        if (field.inner[0].type == 0) return "{" + Fields(field.begin(), field.end()) + "}";
        std::string text;
        for (const auto& tlv : field) {
            text += (text.empty() ? "" : ", ") + Hex(tlv.type) +
                    (tlv.only != nullptr ? " (of its capability) " : " ") + One(tlv);
        }
        return "{" + text + "}";
    }

    std::map<const wire::Field*, std::string> seen_;
    std::string where_;
};

}  // namespace

TEST(Layouts, AFrameIsTakenApartByItsLayout) {
    const auto message =
        Snac(4, 7, IncomingData("Fred", Tlv(2, MessageData("00 'h' 04 16"_hex, 2)) + Tlv(4, "")));
    const std::vector<std::string> expected = {
        "family 0+2 4",
        "subtype 2+2 7",
        "flags 4+2 0",
        "request 6+4 0",
        "message cookie 10+8 ",
        "message channel 18+2 1",
        "sender 20+23 ",
        " screen name 21+4 Fred",
        " warning level 25+2 0",
        " user information 29+14 ",
        "  01 user class 33+2 16",
        "  03 signed on since 39+4 1056964608",
        "message 43+28 ",
        " 02 message 47+20 ",
        "  0501 needed features 51+4 ",
        "  0101 message 59+8 ",
        "   character set 59+2 2",
        "   character subset 61+2 0",
        "   text 63+4 h\xD0\x96",
        " 04 automatic reply 71+0 ",
    };
    EXPECT_EQ(Lines(message), expected);
    EXPECT_EQ(wire::Summary(2, message, wire::Read(2, message)),
              "SNAC(04,07) message from: screen name \"Fred\", text \"h\xD0\x96\"");
    const auto idle = Snac(1, 0x11, "00 00 02 58"_hex);
    EXPECT_EQ(wire::Summary(2, idle, wire::Read(2, idle)), "SNAC(01,11) idle time: seconds 600");
    EXPECT_EQ(wire::Summary(5, "", wire::Read(5, "")), "keep-alive");
    EXPECT_EQ(wire::Summary(9, "x", wire::Read(9, "x")), "channel 9");
    EXPECT_EQ(wire::Summary(2, "x", wire::Read(2, "x")), "no SNAC");
}

TEST(Layouts, PasswordsHashesAndCookiesAreToBeBlottedOut) {
    const struct {
        const char* name;
        ByteString payload;
        std::vector<wire::Range> secrets;
        std::uint8_t channel = 2;
    } cases[] = {
        {"the cookie of the greeting", "00 00 00 01"_hex + Tlv(6, "cookie"), {{8, 6}}, 1},
        {"a sign-on", Snac(0x17, 2, Tlv(1, "Fred") + Tlv(0x25, "hash") + Tlv(2, "pw")), {{22, 4}, {30, 2}}},
        {"its answer", Snac(0x17, 3, Tlv(5, "host") + Tlv(6, "cookie")), {{22, 6}}},
        {"a service", Snac(1, 5, Tlv(6, "cookie")), {{14, 6}}},
        {"a new password", Snac(7, 4, Tlv(2, "new") + Tlv(0x12, "old")), {{14, 3}, {21, 3}}},
        {"a message has none", Snac(4, 6, OutgoingData("Fred", Tlv(2, MessageData("x")))), {}},
        {"cut within a sign-on", Snac(0x17, 2, Tlv(1, "Fred") + "00 25 00 09 'hash'"_hex), {{18, 8}}},
        {"an unknown kind of sign-on", Snac(0x17, 0x77, "x"), {{10, 1}}},
        {"what cannot be read of a message", Snac(4, 6, "x"), {}},
    };
    for (const auto& [name, payload, secrets, channel] : cases) {
        const auto parts = wire::Read(channel, payload);
        EXPECT_EQ(wire::Secrets(channel, payload, parts), secrets) << name;
    }
}

// docs/wire.md ends with the table, as it is here. After a change of the table: put what this test shows
// there.
TEST(Layouts, TheTableInTheDocumentsIsTheTable) {
    const std::string document = kWireMd;
    const auto table = LayoutTableWriter().Write();
    const auto begin = document.find("## Every SNAC\n");
    EXPECT_TRUE(begin != std::string::npos && document.substr(begin) == table) << table;
}
