// The frame stream: the same frames come out however the bytes are cut, and silence and ends make a frame of
// four bytes without a length field when they ought to. What follows such bytes decides too: that the fuzz
// target "arrival" compares with a reader of its own.
#include "core/FlapStream.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/unit/Messages.h"

namespace {

using Frames = std::vector<ByteString>;

struct Reader {
    Reader() { stream.Frame.Bind<&Reader::stream_Frame>(*this); }

    void Feed(ByteString bytes) { stream.Feed(bytes); }
    void stream_Frame(std::span<char> bytes) { frames.emplace_back(bytes.begin(), bytes.end()); }

    FlapStream stream;
    Frames frames;
};

// What comes out when the bytes come in three pieces, cut at the two places.
Frames FramesOf(const ByteString& bytes, std::size_t first, std::size_t second) {
    Reader reader;
    reader.Feed(bytes.substr(0, first));
    reader.Feed(bytes.substr(first, second - first));
    reader.Feed(bytes.substr(second));
    return reader.frames;
}

const auto kBefore = Frame(2, 9, "x");
const auto kGoodbye = "2A 04 00 0A"_hex;
const auto kEmptyFrame = kGoodbye + "00 00"_hex;

}  // namespace

TEST(FlapStream, GivesTheSameFramesForAnyTwoCuts) {
    const Frames frames = {Frame(1, 7, "00 00 00 01"_hex), Frame(5, 8, ""), Frame(2, 9, "**payload*"),
                           Frame(2, 10, "x"), Frame(4, 11, "")};
    ByteString bytes;
    for (const auto& frame : frames) bytes += frame;
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            ASSERT_EQ(FramesOf(bytes, first, second), frames) << first << " " << second;
        }
    }
}

TEST(FlapStream, BehindAFrameSilenceMakesFourBytesAnEmptyFrame) {
    Reader reader;
    reader.Feed(kBefore + kGoodbye);
    EXPECT_TRUE(reader.stream.AwaitsSilence());
    reader.stream.SilencePassed();
    EXPECT_FALSE(reader.stream.AwaitsSilence());
    reader.Feed(Frame(2, 11, "y"));
    EXPECT_EQ(reader.frames, (Frames{kBefore, kEmptyFrame, Frame(2, 11, "y")}));
}

TEST(FlapStream, OnlyWhatLooksLikeTheNextFrameBecomesOneBySilence) {
    for (const auto& held :
         {"2A 04 00 0B"_hex, "2A 04 00 09"_hex, "2A 00 00 0A"_hex, "2A 06 00 0A"_hex, "2B 04 00 0A"_hex}) {
        Reader reader;
        reader.Feed(kBefore + held);
        EXPECT_FALSE(reader.stream.AwaitsSilence()) << HexDump(held);
        reader.stream.PeerClosed();
        EXPECT_EQ(reader.frames, (Frames{kBefore, held + "00 00"_hex}));
    }
}

TEST(FlapStream, AloneFourBytesAreAHeaderUnlessThePeerCloses) {
    for (const std::size_t length : {1u, 3u, 4u, 5u, 7u}) {
        Reader reader;
        reader.Feed("2A 04 00 0A 00 09 01"_hex.substr(0, length));
        EXPECT_FALSE(reader.stream.AwaitsSilence());
        reader.stream.SilencePassed();
        EXPECT_EQ(reader.frames, Frames());
        reader.stream.PeerClosed();
        EXPECT_EQ(reader.frames, length == 4 ? Frames{kEmptyFrame} : Frames()) << length;
    }
}
