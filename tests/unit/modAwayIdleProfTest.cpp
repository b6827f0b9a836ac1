#include "features/modAwayIdleProf.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "core/wire/Ucs2.h"
#include "tests/unit/Messages.h"

using namespace modAwayIdleProf;

namespace {

const auto kSnacHead = "00 02 00 06 00 00 12 34 56 78"_hex;

// The data of a reply, and what becomes of them.
ByteString Reply(const ByteString& tlvs) {
    return "04 'Fred' 00 00 00 01"_hex + Tlv(1, "00 10"_hex) + tlvs;
}
clsHeaderFLAP Received(const ByteString& data) {
    clsHeaderFLAP flap;
    flap.Create(2, kSnacHead + data);
    return flap;
}

// A profile and its source below it.
const std::string kBetween =
    "<br></body></center><body bgcolor=\"#ffffff\"></font><hr><font face=\"fixedsys\">";
ByteString Shown(const std::string& profile, const std::string& source) {
    return Tlv(2, profile + kBetween + source);
}

}  // namespace

TEST(modAwayIdleProf, IdleTimeEndsWhereItsSecondsPass16Bits) {
    for (const std::int32_t minutes : {1093, 65535, -1, 0x7FFFFFFF, -0x7FFFFFFF}) {
        EXPECT_THROW(MakeIdleFlap(minutes), RuntimeError) << minutes;
    }
}

TEST(modAwayIdleProf, TheLastProfileOfAReplyShowsItsSource) {
    ByteString many;  // behind the first TLV of every reply
    for (int i = 0; i < 997; ++i) many += Tlv(3, "x");
    const struct {
        const char* name;
        ByteString data, shown;
    } cases[] = {
        {"one", Reply(Tlv(2, "<b>x</b> & >")), Reply(Shown("<b>x</b> & >", "&lt;b>x&lt;/b> & >"))},
        {"the last of two", Reply(Tlv(2, "a") + Tlv(2, "b") + Tlv(4, "away")),
         Reply(Tlv(2, "a") + Shown("b", "b") + Tlv(4, "away"))},
        {"the 999th, and nothing behind it", Reply(many + Tlv(2, "a") + Tlv(4, "away")),
         Reply(many + Shown("a", "a"))},
        {"no TLVs", Reply(""), Reply("")},
        {"only an away message", Reply(Tlv(4, "away")), Reply(Tlv(4, "away"))},
        {"no name", "00 00 00 00 00"_hex, "00 00 00 00 00"_hex},
    };
    for (const auto& [name, data, shown] : cases) {
        auto flap = Received(data);
        SeeProfileHtml(flap);
        EXPECT_EQ(flap.Data(), kSnacHead + shown) << name;
        EXPECT_EQ(flap.DataLen(), static_cast<std::int32_t>(flap.Data().size())) << name;
    }
}

TEST(modAwayIdleProf, TheSourceIsInTheProfilesOwnCharacters) {
    const auto profile = "00 '<' 00 'b' 00 '>' 30 42"_hex;
    const struct {
        const char* type;
        ByteString profile, shown;
    } cases[] = {
        {"text/aolrtf; charset=\"unicode-2-0\"", profile,
         profile + wire::Ucs2FromAscii(kBetween + "&lt;b>") + "30 42"_hex},
        {"text/x-aolrtf; charset=unicode-2-0; x=y", "3C 00"_hex,  // no "<" but another character
         "3C 00"_hex + wire::Ucs2FromAscii(kBetween) + "3C 00"_hex},
        {"text/aolrtf; charset=\"unicode-2-0\"", "00 '<' 00"_hex, "00 '<' 00"_hex},
        {"text/aolrtf; charset=\"shift-jis\"", "<", "<"},
        {"text/aolrtf; charset=\"ISO-8859-1\"", "<", Shown("<", "&lt;").substr(4)},
        {"text/aolrtf; charset=\"utf-8\"", "<\xC3\xA9", Shown("<\xC3\xA9", "&lt;\xC3\xA9").substr(4)},
        {"text/aolrtf; charset=\"windows-1252\"", "<", Shown("<", "&lt;").substr(4)},
        {"text/aolrtf", "<", Shown("<", "&lt;").substr(4)},
    };
    for (const auto& [type, sent, shown] : cases) {
        auto flap = Received(Reply(Tlv(1, type) + Tlv(2, sent)));
        SeeProfileHtml(flap);
        EXPECT_EQ(flap.Data(), kSnacHead + Reply(Tlv(1, type) + Tlv(2, shown))) << type;
    }
}

TEST(modAwayIdleProf, AReplyThatEndsTooEarlyOrGrowsTooLargeFailsUnchanged) {
    for (const auto& data : {""_hex, "05 'Fred' 00 00 00 00"_hex, "04 'Fred' 00 00 00 01 00 02 00"_hex,
                             Reply(Tlv(2, ByteString(40000, '<')))}) {
        auto flap = Received(data);
        EXPECT_THROW(SeeProfileHtml(flap), RuntimeError);
        EXPECT_EQ(flap.Data(), kSnacHead + data);
    }
}
