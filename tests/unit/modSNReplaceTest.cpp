#include "features/modSNReplace.h"

#include <random>

#include "base/RuntimeError.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/LiteralReplacer.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kFile[] = "/program\\repl.dat";
constexpr std::size_t kLargestPayload = 65535;
constexpr auto ToClient = Direction::ToClient, ToServer = Direction::ToServer;

using Pairs = std::vector<Replacement>;

ByteString Rewrite(const Pairs& pairs, Direction direction, const ByteString& payload) {
    ByteString rewritten;
    const bool replaced =
        modSNReplace::ReplaceScreenNames(ReplacementList(pairs), direction, payload, rewritten);
    return replaced ? rewritten : payload;
}

void ExpectAsLiteral(const Pairs& pairs, const ByteString& payload) {
    for (const auto direction : {ToServer, ToClient}) {
        if (Rewrite(pairs, direction, payload) == RewriteLiterally(pairs, direction, payload)) continue;
        std::string list;
        for (const auto& pair : pairs)
            list += HexDump(pair.screenName) + "-> " + HexDump(pair.replacement) + "\n";
        FAIL() << "payload " << HexDump(payload) << "\npairs\n" << list;
    }
}

class Dice {
 public:
    std::size_t Upto(std::size_t most) { return random_() % (most + 1); }
    ByteString Text(std::string_view bytes, std::size_t least, std::size_t most) {
        ByteString text(least + Upto(most - least), ' ');
        for (auto& byte : text) byte = bytes[Upto(bytes.size() - 1)];
        return text;
    }

 private:
    std::mt19937 random_{1};
};

struct ReplacementFile : testing::Test {
    Rig rig_;
};

}  // namespace

TEST(modSNReplace, FindsANameOnlyBehindALengthByteWhateverItsCaseAndBlanks) {
    const struct {
        Direction direction;
        ByteString sent, arrives;
    } cases[] = {
        {ToClient, "08 'asdf1234'"_hex, "04 'Fred'"_hex},
        {ToClient, "00 01 09 'ASDF 1234' 00"_hex, "00 01 04 'Fred' 00"_hex},
        {ToClient, "10 'asdf1234        x'"_hex, "04 'Fredx'"_hex},
        {ToClient, "08 'asdf1234' 08 'asdf1234'"_hex, "04 'Fred' 04 'Fred'"_hex},
        {ToClient, "10 'asdf1234'"_hex, "04 'Fred'"_hex},      // the data end before the length does
        {ToClient, "08 'asdf12345'"_hex, "04 'Fred5'"_hex},    // whatever comes behind the length
        {ToClient, "'asdf1234'"_hex, "'asdf1234'"_hex},        // nothing before it
        {ToClient, "01 'asdf1234'"_hex, "01 'asdf1234'"_hex},  // no length of a screen name
        {ToClient, "11 'asdf1234'"_hex, "11 'asdf1234'"_hex},
        {ToClient, "07 'asdf1234'"_hex, "07 'asdf1234'"_hex},
        {ToClient, "09 ' asdf1234'"_hex,
         "09 ' asdf1234'"_hex},  // the first character is not where it should be
        {ToClient, "08 'asdf123'"_hex, "08 'asdf123'"_hex},
        {ToClient, ""_hex, ""_hex},
        {ToServer, "04 'fREd' 00"_hex, "08 'asdf1234' 00"_hex},
        {ToServer, "08 'asdf1234'"_hex, "08 'asdf1234'"_hex},
    };
    for (const auto& [direction, sent, arrives] : cases) {
        EXPECT_EQ(Rewrite({{"asdf1234", "Fred"}}, direction, sent), arrives) << HexDump(sent);
    }
}

TEST(modSNReplace, ALaterPairFindsWhatAnEarlierOneWrote) {
    const Pairs chain = {{"one", "two"}, {"two", "three"}, {"four", "one"}};
    EXPECT_EQ(Rewrite(chain, ToClient, "03 'one' 03 'two' 04 'four'"_hex),
              "05 'three' 05 'three' 03 'one'"_hex);
    // The blank in front is part of what the search goes by, also where the normal forms are equal.
    const Pairs sameName = {{" one", "x"}, {"one", "y"}, {"ONE", "z"}};
    EXPECT_EQ(Rewrite(sameName, ToClient, "04 'one ' 04 ' one'"_hex), "01 'y' 01 'x'"_hex);
    // What was put in is searched too, from its second byte on and across its end.
    EXPECT_EQ(Rewrite({{"one", "x\x04"}}, ToClient, "03 'one' 'ONE !'"_hex), "02 'x' 02 'x' 04 '!'"_hex);
}

TEST(modSNReplace, AFrameThatWouldOutgrowItsLengthFieldStaysAsItIs) {
    const Pairs pairs = {{"ab", "abcdef"}};
    const auto full = ByteString(kLargestPayload - 7, '.') + "02 'ab'"_hex;
    EXPECT_EQ(Rewrite(pairs, ToClient, full).size(), kLargestPayload);
    EXPECT_EQ(Rewrite(pairs, ToClient, "." + full), "." + full);
    // An alias that holds its own name behind a length grows for ever.
    EXPECT_EQ(Rewrite({{"ab", "'x' 02 'ab'"_hex}}, ToClient, "02 'ab'"_hex), "02 'ab'"_hex);
}

// Few different bytes, so that names, lengths, blanks and overlaps meet all the time; in every tenth round a
// long list of longer names.
TEST(modSNReplace, RewritesAsTheLiteralAlgorithmDoes) {
    Dice dice;
    constexpr std::string_view kBytes("aAbB \x01\x02\x03\x04\x10\x11", 11);
    for (int round = 0; round < 2000 && !testing::Test::HasFailure(); ++round) {
        const bool isLong = round % 10 == 0;
        Pairs pairs(1 + dice.Upto(isLong ? 150 : 5));
        const auto anyName = [&] {
            const auto& pair = pairs[dice.Upto(pairs.size() - 1)];
            return dice.Upto(1) == 0 ? pair.screenName : pair.replacement;
        };
        for (auto& [screenName, replacement] : pairs) {
            const auto letters = isLong              ? "abcxyzABC  19\xE9"
                                 : dice.Upto(9) == 0 ? kBytes
                                                     : kBytes.substr(0, 5);
            screenName = dice.Text(letters, 1, isLong ? 18 : 5);
            replacement = dice.Upto(3) == 0 ? screenName + "1" : dice.Text(letters, 1, isLong ? 18 : 5);
        }
        ByteString payload;
        while (payload.size() < (isLong ? 600 : 40)) {
            const auto name = anyName();
            const auto length = name.size() + dice.Upto(1) - (dice.Upto(7) == 0 ? 1 : 0);
            payload += static_cast<char>(length) + name + dice.Text(kBytes, 0, 6);
        }
        ExpectAsLiteral(pairs, payload.substr(0, payload.size() - dice.Upto(20)));
    }
}

TEST_F(ReplacementFile, ReadsTwoLinesForEachPair) {
    const struct {
        std::string_view bytes;
        Pairs pairs;
        bool apply;  // at least one pair is whole
    } cases[] = {
        {"", {}, false},
        {"asdf1234\r\nFred\r\nBob 2\r\nBoss\r\n", {{"asdf1234", "Fred"}, {"Bob 2", "Boss"}}, true},
        {"asdf1234\r\nFred\r\nodd", {{"asdf1234", "Fred"}, {"odd", ""}}, true},
        {"a\nb\rc\n\nd", {{"a", "b"}, {"c", ""}, {"d", ""}}, true},
        {"\r\nlost\r\n\r\n\r\na\r\nb\r\n\r\nc\r\n", {{"a", "b"}, {"", "c"}}, true},
        {"only a name\r\n\r\n\r\nonly an alias\r\n", {{"only a name", ""}, {"", "only an alias"}}, false},
        {std::string_view("\0\x02\r\n\xFF\r\n", 7), {{std::string("\0\x02", 2), "\xFF"}}, true},
    };
    EXPECT_EQ(modSNReplace::LoadReplacements(), nullptr) << "no file";
    for (const auto& [bytes, pairs, apply] : cases) {
        os::fake::PutFile(kFile, bytes);
        EXPECT_EQ(modSNReplace::ReadReplacements(), pairs) << HexDump(bytes);
        EXPECT_EQ(modSNReplace::LoadReplacements() != nullptr, apply) << HexDump(bytes);
    }
    EXPECT_TRUE(rig_.Reports().empty());
    os::fake::FailReads(kFile, true);
    EXPECT_THROW(modSNReplace::LoadReplacements(), RuntimeError) << "a failure is no empty list";
}

TEST_F(ReplacementFile, LeavesOutTooLongPairsAndReportsThemOnce) {
    const std::string longest(255, 'x');
    os::fake::PutFile(kFile,
                      "long\r\n" + longest + "x\r\n" + longest + "x\r\nlong\r\nname\r\n" + longest + "\r\n");
    const auto list = modSNReplace::LoadReplacements();
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(rig_.Reports().size(), 1u);
    EXPECT_EQ(rig_.Reports()[0].where, "modSNReplace:LoadReplacements");

    ByteString rewritten;
    EXPECT_FALSE(list->Rewrite(ToClient, "04 'long'"_hex, rewritten));
    ASSERT_TRUE(list->Rewrite(ToClient, "04 'name'"_hex, rewritten));
    EXPECT_EQ(rewritten, "\xFF" + longest);
}

TEST_F(ReplacementFile, IsReadToItsLimitsAndNoFurther) {
    std::string thousand;
    for (int i = 0; i < 1000; ++i) thousand += "n" + std::to_string(i) + "\r\nalias\r\n";
    const struct {
        std::string file;
        std::size_t pairs, reports;
    } cases[] = {
        {thousand, 1000, 0},
        {thousand + "one more", 1000, 1},
        // The limit falls into the second pair's name, which must not become a shorter name.
        {std::string(modSNReplace::kLargestFile - 10, 'a') + "\r\nb\r\nsecond\r\nalias\r\n", 1, 1},
        {std::string(2 * modSNReplace::kLargestFile, 'a'), 0, 1},
    };
    for (const auto& [file, pairs, reports] : cases) {
        Rig::Reports().clear();
        os::fake::PutFile(kFile, file);
        EXPECT_EQ(modSNReplace::ReadReplacements().size(), pairs) << file.substr(0, 20);
        EXPECT_EQ(Rig::Reports().size(), reports) << file.substr(0, 20);
    }
}
