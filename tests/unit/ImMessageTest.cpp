#include "features/ImMessage.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "tests/unit/Messages.h"

namespace {

std::string TextOf(const ByteString& messageData) {
    return ReadOutgoingMessage(OutgoingData("Fred", Tlv(2, messageData))).text;
}

}  // namespace

TEST(ImMessage, IsTheFirstMessageTlvInBothDirections) {
    const auto tlvs = Tlv(4, "") + Tlv(2, MessageData("<B>hi</B>")) + Tlv(2, MessageData("later"));
    for (const auto& message : {ReadOutgoingMessage(OutgoingData("Fred Smith", tlvs)),
                                ReadIncomingMessage(IncomingData("Fred Smith", tlvs))}) {
        EXPECT_EQ(message.screenName, "Fred Smith");
        EXPECT_EQ(message.text, "<B>hi</B>");
    }
}

TEST(ImMessage, TheSendersInformationIsSkippedByItsCountWhateverItsTypes) {
    const auto head = "11 22 33 44 55 66 77 88 00 01 04 'Fred' 00 00"_hex;
    const auto decoy = Tlv(2, MessageData("not the message"));
    const auto message = Tlv(2, MessageData("the message"));
    EXPECT_EQ(ReadIncomingMessage(head + "00 01"_hex + decoy + message).text, "the message");
    EXPECT_EQ(ReadIncomingMessage(head + "00 00"_hex + message + decoy).text, "the message");
    EXPECT_EQ(ReadIncomingMessage(head + "00 01"_hex + decoy).text, "");
}

TEST(ImMessage, ADamagedTextIsWhatIsThereAndNoFailure) {
    EXPECT_EQ(ReadOutgoingMessage(OutgoingData("Fred", Tlv(5, "x"))).text, "");
    const struct {
        ByteString data;
        std::string text;
    } cases[] = {
        {""_hex, ""},
        {"05 01 00"_hex, ""},
        {"05 01 00 01 01"_hex, ""},                         // no second fragment
        {"05 01 00 09 01 01 01"_hex, ""},                   // the first runs past the end
        {"05 01 00 00 01 01"_hex, ""},                      // the second's head is cut
        {"05 01 00 00 01 01 00 03 00 00 00 'hi'"_hex, ""},  // shorter than its character set
        {"05 01 00 00 01 01 00 04 00 00 00 00 'hi'"_hex, ""},
        {"05 01 00 00 01 01 00 05 00 00 00 00 'hi'"_hex, "h"},
        {"05 01 00 00 01 01 00 20 00 00 00 00 'hi'"_hex, "hi"},      // runs past the end: what is there
        {"05 01 00 00 01 01 FF FF 00 02 00 00 00 'h' 00"_hex, "h"},  // and half a character is not
    };
    for (const auto& [data, text] : cases) EXPECT_EQ(TextOf(data), text) << HexDump(data);
}

TEST(ImMessage, Ucs2BecomesTheCodePageWithEntitiesForTheRest) {
    constexpr std::int32_t kUcs2 = 2;
    const struct {
        std::int32_t charset;
        ByteString bytes;
        std::string text;
    } cases[] = {
        {kUcs2, "00 'h' 00 'i' 00 E9"_hex, "hi\xE9"},
        {kUcs2, "20 AC 20 1C 01 78"_hex,
         "\x80\x93\x9F"},  // the euro sign, a quotation mark, Y with diaeresis
        {kUcs2, "04 16 00 '!' 21 22"_hex, "&#1046;!\x99"},  // Cyrillic
        {kUcs2, "D8 3D DE 00 00 'x'"_hex, "&#128512;x"},    // a surrogate pair is one character
        {kUcs2, "D8 3D 00 'x' DE 00 D8 3D"_hex, "&#65533;x&#65533;&#65533;"},
        {kUcs2, "00 81 00 80 01 00"_hex, "\x81&#128;&#256;"},
        {kUcs2, "00 00 FF FD"_hex, std::string("\0&#65533;", 9)},
        {0, "00 'h' E9"_hex, "00 'h' E9"_hex},  // any other character set stays as it stands
        {3, "00 'h' E9"_hex, "00 'h' E9"_hex},
    };
    for (const auto& [charset, bytes, text] : cases)
        EXPECT_EQ(TextOf(MessageData(bytes, charset)), text) << HexDump(bytes);
}

TEST(ImMessage, DataThatEndTooEarlyAreAFailure) {
    const auto whole = IncomingData("Fred", "");
    const auto lastTlvsValue = whole.size() - 4;  // a value may be cut short
    for (std::size_t length = 0; length < lastTlvsValue; ++length) {
        EXPECT_THROW(ReadIncomingMessage(whole.substr(0, length)), RuntimeError) << length;
    }
    EXPECT_EQ(ReadIncomingMessage(whole).text, "");
    EXPECT_THROW(ReadOutgoingMessage(OutgoingData("Fred", "00 02 00"_hex)), RuntimeError);
    EXPECT_THROW(ReadOutgoingMessage("11 22 33 44 55 66 77 88 00 01 05 'Fred'"_hex), RuntimeError);
}
