// The frame stream: the same frames come out however the bytes are cut, and four bytes without a length field
// are a frame exactly when they ought to be.
#include "core/FlapStream.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/unit/Hex.h"

namespace {

class Reader {
 public:
    Reader() { stream.Frame.Bind<&Reader::stream_Frame>(*this); }

    void Feed(ByteString bytes) { stream.Feed(bytes); }
    std::vector<ByteString> Take() { return std::exchange(frames_, {}); }

    FlapStream stream;

 private:
    void stream_Frame(std::span<char> bytes) { frames_.emplace_back(bytes.begin(), bytes.end()); }

    std::vector<ByteString> frames_;
};

ByteString Frame(std::int32_t channel, std::int32_t sequence, const ByteString& payload) {
    return "*" + ByteToStr(channel) + WordToStr(sequence) +
           WordToStr(static_cast<std::int32_t>(payload.size())) + payload;
}

ByteString Join(const std::vector<ByteString>& frames) {
    ByteString bytes;
    for (const auto& frame : frames) bytes += frame;
    return bytes;
}

const std::vector<ByteString> kFrames = {Frame(1, 7, "00 00 00 01"_hex), Frame(5, 8, ""),
                                         Frame(2, 9, "**payload*"), Frame(2, 10, "x"), Frame(4, 11, "")};

}  // namespace

TEST(FlapStream, GivesTheSameFramesForAnyTwoCuts) {
    const auto bytes = Join(kFrames);
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            Reader reader;
            reader.Feed(bytes.substr(0, first));
            reader.Feed(bytes.substr(first, second - first));
            reader.Feed(bytes.substr(second));
            ASSERT_EQ(reader.Take(), kFrames) << first << " " << second;
        }
    }
}

TEST(FlapStream, GivesTheSameFramesByteByByte) {
    Reader reader;
    for (const char byte : Join(kFrames)) reader.Feed(ByteString(1, byte));
    EXPECT_EQ(reader.Take(), kFrames);
}

TEST(FlapStream, RandomStreamsInRandomChunksComeOutWhole) {
    std::mt19937 random(20261121);
    const auto upTo = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit)(random);
    };
    for (int round = 0; round < 200; ++round) {
        std::vector<ByteString> frames;
        for (std::size_t i = 0; i < 20; ++i) {
            ByteString payload(upTo(10) == 0 ? upTo(9000) : upTo(40), '\0');
            for (auto& byte : payload) byte = static_cast<char>(upTo(255));
            frames.push_back(Frame(2, static_cast<std::int32_t>((65530 + i) % 65536), payload));
        }
        const auto bytes = Join(frames);
        Reader reader;
        for (std::size_t at = 0; at < bytes.size();) {
            const auto length = 1 + upTo(upTo(3) == 0 ? 3000 : 12);
            reader.Feed(bytes.substr(at, length));
            at += length;
        }
        ASSERT_EQ(reader.Take(), frames) << "round " << round;
    }
}

TEST(FlapStream, FourBytesThatAFrameFollowsWereAnEmptyFrame) {
    const std::vector<ByteString> expected = {Frame(2, 9, "x"), Frame(4, 10, ""), Frame(2, 11, "y")};
    const auto next = Frame(2, 11, "y");
    for (std::size_t cut = 0; cut < next.size(); ++cut) {
        Reader reader;
        reader.Feed(Frame(2, 9, "x") + "2A 04 00 0A"_hex);
        EXPECT_TRUE(reader.stream.AwaitsSilence());
        reader.Feed(next.substr(0, cut));
        reader.Feed(next.substr(cut));
        EXPECT_EQ(reader.Take(), expected) << cut;
    }
}

TEST(FlapStream, FourBytesThatSomethingElseFollowsWereAHeader) {
    // Lengths whose bytes begin like a marker, a marker and channel, and a frame with the wrong number.
    for (const auto& length : {"00 05"_hex, "2A 00"_hex, "2A 06"_hex, "2A 02"_hex}) {
        const auto header = "2A 02 00 0A"_hex;
        const auto size = static_cast<std::size_t>(GetWord(length, 1));
        const auto rest = length + ByteString(size, 'p');
        for (std::size_t cut = 0; cut < 5; ++cut) {
            Reader reader;
            reader.Feed(Frame(2, 9, "x") + header);
            reader.Feed(rest.substr(0, cut));
            reader.Feed(rest.substr(cut));
            ASSERT_EQ(reader.Take(), (std::vector<ByteString>{Frame(2, 9, "x"), header + rest})) << cut;
        }
    }
}

TEST(FlapStream, SilenceOrTheEndMakesFourBytesAnEmptyFrame) {
    const std::vector<ByteString> goodbye = {"2A 04 00 0A 00 00"_hex};
    {
        Reader reader;
        reader.Feed(Frame(2, 9, "x") + "2A 04 00 0A"_hex);
        reader.Take();
        reader.stream.SilencePassed();
        EXPECT_EQ(reader.Take(), goodbye);
        EXPECT_FALSE(reader.stream.AwaitsSilence());
        reader.Feed(Frame(2, 11, "y"));
        EXPECT_EQ(reader.Take().size(), 1u);
    }
    {
        Reader reader;  // alone: a header for as long as it takes, unless the peer closes
        reader.Feed("2A 04 00 0A"_hex);
        EXPECT_FALSE(reader.stream.AwaitsSilence());
        reader.stream.SilencePassed();
        EXPECT_TRUE(reader.Take().empty());
        reader.stream.PeerClosed();
        EXPECT_EQ(reader.Take(), goodbye);
    }
    for (const std::size_t length : {1u, 3u, 5u, 7u}) {
        Reader reader;  // any other rest is an unfinished frame
        reader.Feed("2A 04 00 0A 00 09 01"_hex.substr(0, length));
        reader.stream.PeerClosed();
        EXPECT_TRUE(reader.Take().empty()) << length;
    }
}
