// What passes, as it is kept, shown and saved.
#include "features/traffic/PcapngWriter.h"
#include "features/traffic/TrafficView.h"
#include "tests/unit/Rig.h"

namespace {

using Fate = PassedFrame::Fate;

class TrafficTest : public testing::Test {
 protected:
    Traffic& Kept() { return rig_.TheOverview().traffic; }
    std::vector<std::string> Lines(const TrafficFilter& filter) {
        TrafficView view(Kept());
        view.SetFilter(filter);
        view.Update();
        std::vector<std::string> lines;
        for (std::size_t row = 0; row < view.Count(); ++row) {
            const auto frame = Kept().At(view.NumberAt(row));
            lines.push_back(
                ColumnText(frame, TrafficColumn::Direction) + "|" + ColumnText(frame, TrafficColumn::Number) +
                "|" + ColumnText(frame, TrafficColumn::Mark) + "|" + ColumnText(frame, TrafficColumn::Kind));
        }
        return lines;
    }

    Rig rig_{{FeatureEntry{{{0x01, 0x16, {}}}, [](Session& session) {
                               struct Meddler : SessionFeature {
                                   explicit Meddler(Session& one) : session(one) {}
                                   Verdict Frame(FrameView& frame) override {
                                       if (frame.Way() == Direction::ToServer) return Verdict::Drop;
                                       session.Send(Direction::ToClient, Snac(1, 0x0B, ""));
                                       frame.Replace(Snac(1, 0x0D, ""));
                                       return Verdict::Pass;
                                   }
                                   Session& session;
                               };
                               return std::make_unique<Meddler>(session);
                           }}}};
};

std::uint32_t Little(const std::string& bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) number = number << 8 | static_cast<std::uint8_t>(bytes.at(at + i));
    return number;
}

}  // namespace

TEST_F(TrafficTest, EveryFrameIsShownAsItsReceiverReadsItWithWhatBecameOfIt) {
    auto pair = rig_.ConnectPair();
    pair.client.Feed(Frame(1, 1, "00 00 00 01"_hex));
    Kept().SwitchOn(true);
    pair.server.Feed(Frame(1, 100, "00 00 00 01"_hex));
    pair.client.Feed(Frame(2, 2, Snac(1, 0x16, "")));
    pair.client.Feed(Frame(2, 3, Snac(1, 2, "")));
    pair.server.Feed(Frame(2, 101, Snac(1, 0x16, "")));
    Kept().SwitchOn(false);
    pair.server.Feed(Frame(5, 102, ""));
    EXPECT_EQ(Lines({}),
              (std::vector<std::string>{"to client|100||greeting", "to server||dropped|SNAC(01,16) nothing",
                                        "to server|2||SNAC(01,02) client is ready",
                                        "to client|101|injected|SNAC(01,0B) pause",
                                        "to client|102|rewritten|SNAC(01,0D) resume"}));
    EXPECT_EQ(Lines({.family = 1}).size(), 4u);
    const auto rewritten = Kept().At(4);
    EXPECT_EQ(rewritten.before, Snac(1, 0x16, ""));
    EXPECT_EQ(rewritten.after, Snac(1, 0x0D, ""));
    EXPECT_EQ(rewritten.numberBefore, 101);
}

TEST_F(TrafficTest, EightMegabytesAreKeptAndTheViewFollows) {
    auto pair = rig_.ConnectTalking();
    Kept().SwitchOn(true);
    TrafficView view(Kept());
    const ByteString payload = Snac(4, 7, ByteString(20'000, 'x'));
    std::size_t dropped = 0;
    constexpr std::size_t kFrames = 600;
    for (std::size_t i = 0; i < kFrames; ++i) {
        pair.server.Feed(Frame(2, static_cast<std::int32_t>(101 + i), payload));
        pair.client.TakeReceived();
        const auto change = view.Update();
        EXPECT_EQ(change.added, 1u);
        dropped += change.dropped;
    }
    const auto kept = Kept().Count();
    EXPECT_LE(kept * payload.size(), Traffic::kMaxBytes);
    EXPECT_GE(kept * payload.size(), Traffic::kMaxBytes * 9 / 10);
    EXPECT_EQ(dropped + kept, kFrames);
    EXPECT_EQ(view.Count(), kept);
    EXPECT_EQ(view.NumberAt(0), Kept().First());
    EXPECT_EQ(Kept().At(Kept().First()).after, payload);
    Kept().Clear();
    EXPECT_TRUE(view.Update().isNew);
    EXPECT_EQ(view.Count(), 0u);
}

TEST_F(TrafficTest, SecretsAreNeitherShownNorSaved) {
    auto pair = rig_.ConnectTalking();
    Kept().SwitchOn(true);
    pair.client.Feed(Frame(2, 2, Snac(0x17, 2, Tlv(1, "Me") + Tlv(0x25, "hash-of-password"))));
    pair.server.Feed(Frame(2, 101, Snac(0x17, 3, Tlv(5, "10.0.0.9:5190") + Tlv(6, "ticket-0123"))));
    const auto file = PcapngOf(Kept());
    std::string shown;
    for (std::uint64_t number = 0; number < Kept().Count(); ++number) {
        shown += ColumnText(Kept().At(number), TrafficColumn::Summary);
        for (const auto& line : TakeApart(Kept().At(number))) shown += line.name + line.value + line.hex;
    }
    for (const std::string secret : {"hash-of-password", "ticket-0123"}) {
        EXPECT_EQ(file.find(secret), std::string::npos) << secret;
        EXPECT_EQ(shown.find(secret), std::string::npos) << shown;
        EXPECT_EQ(shown.find(HexDump(secret)), std::string::npos) << shown;
        EXPECT_NE(PcapngOf(Kept(), true).find(secret), std::string::npos);
    }
    EXPECT_NE(shown.find("10.0.0.9:5190"), std::string::npos) << shown;
    // Blocks follow each other without a gap, and each is as long as it says at both ends.
    std::size_t blocks = 0;
    for (std::size_t at = 0; at < file.size(); at += Little(file, at + 4), ++blocks)
        ASSERT_EQ(Little(file, at + 4), Little(file, at + Little(file, at + 4) - 4)) << at;
    EXPECT_EQ(blocks, 3u + 6u + 4u);
}
