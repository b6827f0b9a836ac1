#include "features/modSNReplace.h"

#include <random>

#include "base/RuntimeError.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/LiteralReplacer.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kFile[] = "/program\\repl.dat";
constexpr std::size_t kMaxPayload = 65535;
constexpr auto ToClient = Direction::ToClient, ToServer = Direction::ToServer;

using Pairs = std::vector<Replacement>;

// By the list alone, whatever the payload is made of.
ByteString Rewrite(const Pairs& pairs, Direction direction, const ByteString& payload) {
    const auto changed = ReplacementList(pairs).Rewrite(direction, payload);
    return changed ? changed->bytes : payload;
}

// As the frame goes on.
ByteString PassedOn(const Pairs& pairs, Direction direction, const ByteString& payload) {
    ByteString rewritten;
    const bool replaced =
        modSNReplace::ReplaceScreenNames(ReplacementList(pairs), direction, 2, payload, rewritten);
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
    // The data are searched in blocks; what is put in at the front of one ends a name that begins before it.
    const Pairs acrossBlocks = {{"ab", "c"}, {"'x' 01 'c'"_hex, "new"}};
    for (std::size_t size = 250; size < 260; ++size) {
        const ByteString before(size, '.');
        EXPECT_EQ(Rewrite(acrossBlocks, ToClient, before + "03 'x' 02 'ab'"_hex), before + "03 'new'"_hex)
            << size;
    }
    // What was put in is searched too, from its second byte on and across its end.
    EXPECT_EQ(Rewrite({{"one", "x\x04"}}, ToClient, "03 'one' 'ONE !'"_hex), "02 'x' 02 'x' 04 '!'"_hex);
}

TEST(modSNReplace, AFrameThatWouldOutgrowItsLengthFieldStaysAsItIs) {
    const Pairs pairs = {{"ab", "abcdef"}};
    const auto full = ByteString(kMaxPayload - 7, '.') + "02 'ab'"_hex;
    EXPECT_EQ(Rewrite(pairs, ToClient, full).size(), kMaxPayload);
    EXPECT_EQ(Rewrite(pairs, ToClient, "." + full), "." + full);
    // An alias that holds its own name behind a length grows for ever.
    EXPECT_EQ(Rewrite({{"ab", "'x' 02 'ab'"_hex}}, ToClient, "02 'ab'"_hex), "02 'ab'"_hex);
}

TEST(modSNReplace, TheLengthsAroundWhatWasReplacedFit) {
    const auto item = [](const ByteString& name, const ByteString& tlvs) {
        return Word(name.size()) + name + "00 01 00 02 00 00"_hex + Word(tlvs.size()) + tlvs;
    };
    const auto said = [](const ByteString& tlvs) { return "11 22 33 44 55 66 77 88 00 03"_hex + tlvs; };
    const auto rendezvous = [](const ByteString& invitation) {
        return Tlv(5, "00 00 11 22 33 44 55 66 77 88"_hex + ByteString(16, 'c') + Tlv(0x0C, invitation));
    };
    const auto user = [](const ByteString& name) {
        return Named(name) + "00 00 00 01 00 01 00 02 00 10"_hex;
    };
    const auto across = Snac(0x13, 0x1C, "06 'x' 09 'asdf' '1234 z'"_hex);
    const auto full = Snac(0x13, 0x1C, Named(ByteString(250, 'x') + "04 'Fred'"_hex));
    const struct {
        const char* name;
        Direction direction;
        ByteString sent, arrives;
    } cases[] = {
        {"a nickname", ToServer, Snac(0x13, 9, item("asdf1234", Tlv(0x131, "Fred") + Tlv(0x13C, "x"))),
         Snac(0x13, 9, item("asdf1234", Tlv(0x131, "asdf1234") + Tlv(0x13C, "x")))},
        {"the whole list", ToClient,
         Snac(0x13, 6,
              "00 00 02"_hex + item("asdf1234", "") + item("other", Tlv(0x131, "ASDF 1234")) + "mail"),
         Snac(0x13, 6, "00 00 02"_hex + item("Fred", "") + item("other", Tlv(0x131, "Fred")) + "mail")},
        {"a speaker in a room", ToClient,
         Snac(0x0E, 6, said(Tlv(3, user("asdf1234")) + Tlv(5, Tlv(1, "asdf1234")))),
         Snac(0x0E, 6, said(Tlv(3, user("Fred")) + Tlv(5, Tlv(1, "Fred"))))},
        {"an invitation", ToClient, Snac(4, 7, IncomingData("asdf1234", rendezvous("asdf1234") + Tlv(3, ""))),
         Snac(4, 7, IncomingData("Fred", rendezvous("Fred") + Tlv(3, "")))},
        {"a version before the data", ToServer,
         "00 13 00 09 80 00 00 00 00 00 00 06 00 01 00 02 00 04"_hex + item("a", Tlv(0x131, "Fred")),
         "00 13 00 09 80 00 00 00 00 00 00 06 00 01 00 02 00 04"_hex + item("a", Tlv(0x131, "asdf1234"))},
        {"a kind that is not in the table", ToServer, Snac(0x13, 0x77, Tlv(5, Tlv(1, "Fred"))),
         Snac(0x13, 0x77, "00 05 00 08 00 01 00 08 'asdf1234'"_hex)},
        {"a frame that does not fit", ToServer, Snac(0x0E, 5, said(Tlv(5, Tlv(1, "Fred")) + "00 07 00"_hex)),
         Snac(0x0E, 5, said("00 05 00 08 00 01 00 08 'asdf1234' 00 07 00"_hex))},
        {"a value that is not as its layout says", ToServer,
         Snac(0x0E, 5, said(Tlv(5, "00 01 00 0F 04 'Fred'"_hex))),
         Snac(0x0E, 5, said(Tlv(5, "00 01 00 0F 08 'asdf1234'"_hex)))},
        // What would tear the frame is left alone.
        {"across the end of a block", ToClient, across, across},
        {"a length of one byte that cannot grow", ToServer, full, full},
    };
    for (const auto& [name, direction, sent, arrives] : cases)
        EXPECT_EQ(PassedOn({{"asdf1234", "Fred"}}, direction, sent), arrives) << name;
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
        EXPECT_EQ(modSNReplace::ReadAliasFile().pairs, pairs) << HexDump(bytes);
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

    EXPECT_FALSE(list->Rewrite(ToClient, "04 'long'"_hex));
    const auto changed = list->Rewrite(ToClient, "04 'name'"_hex);
    ASSERT_TRUE(changed);
    EXPECT_EQ(changed->bytes, "\xFF" + longest);
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
        // That the first name is too long is a report of its own. The limit falls into the second pair's
        // name, which must not become a shorter name.
        {std::string(modSNReplace::kMaxFileBytes - 10, 'a') + "\r\nb\r\nsecond\r\nalias\r\n", 1, 2},
        // It falls between a name and its alias, which stay together, and between CR and LF.
        {std::string(modSNReplace::kMaxFileBytes - 10, 'a') + "\r\nb\r\nno\r\nalias\r\n", 1, 2},
        {std::string(modSNReplace::kMaxFileBytes - 4, 'a') + "\r\nb\r\nsecond\r\nalias\r\n", 1, 2},
        {std::string(2 * modSNReplace::kMaxFileBytes, 'a'), 0, 1},
    };
    for (const auto& [file, pairs, reports] : cases) {
        Rig::Reports().clear();
        os::fake::PutFile(kFile, file);
        const auto read = modSNReplace::ReadAliasFile();
        EXPECT_EQ(read.pairs.size(), pairs) << file.substr(0, 20);
        modSNReplace::LoadReplacements();
        EXPECT_EQ(Rig::Reports().size(), reports) << file.substr(0, 20);
        modSNReplace::SaveAliasFile(read);
        EXPECT_TRUE(os::fake::FileText(kFile) == file) << "bytes are lost: " << file.substr(0, 20);
    }
}
