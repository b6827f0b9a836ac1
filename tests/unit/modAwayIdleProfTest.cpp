#include "features/modAwayIdleProf.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "core/clsHeaderSNAC.h"
#include "tests/unit/Messages.h"

using namespace modAwayIdleProf;

namespace {

const auto kTextType = "00 1F 'text/aolrtf; charset=\"us-ascii\"'"_hex;

ByteString ReplyData(const ByteString& tlvs) {
    return "04 'Fred' 00 00 00 01"_hex + Tlv(1, "00 10"_hex) + tlvs;
}

// The data of the reply after SeeProfileHtml.
ByteString Shown(const ByteString& data) {
    const auto head = "00 02 00 06 00 00 12 34 56 78"_hex;
    clsHeaderFLAP flap;
    flap.Create(2, head + data);
    SeeProfileHtml(flap);
    EXPECT_EQ(flap.Data().substr(0, head.size()), head);
    EXPECT_EQ(flap.DataLen(), static_cast<std::int32_t>(flap.Data().size()));
    return flap.Data().substr(head.size());
}

}  // namespace

TEST(modAwayIdleProf, AwayFramesAreBuiltToTheByte) {
    const auto head = "00 02 00 04 00 00 00 00 00 00 00 03"_hex + kTextType;
    const auto away = MakeAwayFlap("gone <B>");
    EXPECT_EQ(away.ChannelID(), 2);
    EXPECT_EQ(away.Data(), head + "00 04 00 08 'gone <B>'"_hex);
    EXPECT_EQ(away.DataLen(), 57);
    EXPECT_EQ(MakeAwayFlap("").Data(), head + "00 04 00 00"_hex);
}

TEST(modAwayIdleProf, ProfileFramesAreBuiltToTheByte) {
    const std::string profile(300, 'x');
    EXPECT_EQ(MakeProfileFlap(profile).Data(),
              "00 02 00 04 00 00 00 00 00 00 00 01"_hex + kTextType + "00 02 01 2C"_hex + profile);
}

TEST(modAwayIdleProf, IdleTimeEndsWhereItsSecondsPass16Bits) {
    const auto head = "00 01 00 11 00 00 00 00 00 00"_hex;
    EXPECT_EQ(MakeIdleFlap(0).Data(), head + "00 00 00 00"_hex);
    EXPECT_EQ(MakeIdleFlap(1).Data(), head + "00 00 00 3C"_hex);
    EXPECT_EQ(MakeIdleFlap(kMostIdleMinutes).Data(), head + "00 00 FF F0"_hex);
    for (const std::int32_t minutes : {1093, 65535, -1, 0x7FFFFFFF, -0x7FFFFFFF}) {
        EXPECT_THROW(MakeIdleFlap(minutes), RuntimeError) << minutes;
    }
}

TEST(modAwayIdleProf, AProfileShowsItsSource) {
    EXPECT_EQ(Shown(ReplyData(Tlv(2, "<b>x</b> & >"))),
              ReplyData(Tlv(2,
                            "<b>x</b> & ><br></body></center><body bgcolor=\"#ffffff\"></font><hr>"
                            "<font face=\"fixedsys\">&lt;b>x&lt;/b> & >")));
}

TEST(modAwayIdleProf, OnlyTheLastProfileOfAReplyIsRewritten) {
    const auto shown = Shown(ReplyData(Tlv(2, "a") + Tlv(2, "b") + Tlv(4, "away")));
    EXPECT_EQ(shown, ReplyData(Tlv(2, "a") +
                               Tlv(2,
                                   "b<br></body></center><body bgcolor=\"#ffffff\"></font><hr>"
                                   "<font face=\"fixedsys\">b") +
                               Tlv(4, "away")));
}

TEST(modAwayIdleProf, RepliesWithoutAProfileKeepTheirContent) {
    for (const auto& data : {ReplyData(""), ReplyData(Tlv(4, "away")), "00 00 00 00 00"_hex}) {
        EXPECT_EQ(Shown(data), data);
    }
}

TEST(modAwayIdleProf, AReplyThatEndsTooEarlyOrGrowsTooLargeFailsUnchanged) {
    for (const auto& data : {""_hex, "05 'Fred' 00 00 00 00"_hex, "04 'Fred' 00 00 00 01 00 02 00"_hex,
                             ReplyData(Tlv(2, ByteString(40000, '<')))}) {
        clsHeaderFLAP flap;
        flap.Create(2, "00 02 00 06 00 00 00 00 00 00"_hex + data);
        const auto before = flap.Data();
        EXPECT_THROW(SeeProfileHtml(flap), RuntimeError);
        EXPECT_EQ(flap.Data(), before);
    }
}
