// Messages that wait, between a fake client and a fake server: nothing lost, nothing twice, nobody disturbed.
#include "app/services/modRegistry.h"
#include "base/RuntimeError.h"
#include "features/RateLimit.h"
#include "features/SnacBytes.h"
#include "features/waiting/WaitingMessages.h"
#include "os/Files.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kFile[] = "/program/waiting.dat";
constexpr std::int64_t kNow = 1'000'000'000;

struct WaitingTest : testing::Test, NumberedSession {
    WaitingTest() {
        TheWaitingMessages().Forget();
        for (const char* name : {"keepmessages", "fetchmessages"}) modRegistry::WriteSetting(name, "1");
        os::fake::timeOfDay.secondsSince1970 = kNow;
        os::fake::PutFile("/program/repl.dat", "tom1\r\nTom\r\n");
    }

    static ByteString Im(const ByteString& name, const ByteString& tlvs = {}) {
        return OutgoingData(name, Tlv(2, MessageData("hi")) + tlvs);
    }
    static ByteString Message(std::uint32_t request, const ByteString& data) {
        return SnacPayload(4, 6, request, data);
    }
    static ByteString Refusal(std::uint32_t request, std::int32_t code = 4) {
        return SnacPayload(4, 1, request, WordToStr(code));
    }
    static ByteString Acknowledgement(std::uint32_t request, const std::string& name = "tom1") {
        return SnacPayload(4, 0x0C, request, "11 22 33 44 55 66 77 88 00 01"_hex + Named(name));
    }
    // Of a frame of our own to the server, whose answers are dropped.
    ByteString Probe(std::uint32_t request) { return ToServer(SnacPayload(4, 4, request)); }
    void Keep(const ByteString& data) {
        TheWaitingMessages().Keep({0, kNow, 0, "me", "tom1", "Tom", data, false});
    }
    static ByteString Arrival(const std::string& name) {
        return Snac(3, 0x0B, Named(name) + "00 00 00 01"_hex + Tlv(1, "00 10"_hex));
    }
    // A message and its refusal, of which the server hears nothing more.
    void ExpectUntouched(const ByteString& message, const ByteString& refusal) {
        ClientSends(message);
        EXPECT_EQ(pair->server.TakeReceived(), ToServer(message));
        ServerSends(refusal);
        EXPECT_EQ(pair->server.TakeReceived(), "");
        EXPECT_EQ(pair->client.TakeReceived(), ToClient(refusal));
    }
    // Notices differ in their cookie.
    static bool IsNotice(const std::string& bytes, const std::string& text) {
        return bytes.find("\x03Tom") != std::string::npos && bytes.find(text) != std::string::npos &&
               bytes.find(Tlv(4, "")) != std::string::npos;
    }

    // The client's message to Tom is refused, and offered once more under request kFirst.
    void Refuse() {
        SignOn("me");
        ClientSends(Message(7, Im("Tom")));
        EXPECT_EQ(pair->server.TakeReceived(), ToServer(Message(7, Im("tom1"))));
        ServerSends(Refusal(7));
        EXPECT_EQ(pair->server.TakeReceived(),
                  ToServer(Message(kFirst, Im("tom1", Tlv(3, "") + Tlv(6, "")))));
        EXPECT_EQ(pair->client.TakeReceived(), "") << "the client never sees the refusal";
    }

    static constexpr std::uint32_t kFirst = 0x57000001;
};

}  // namespace

TEST_F(WaitingTest, AMessageThatTheServerStoresIsToldOnceAndForgotten) {
    Refuse();
    EXPECT_TRUE(os::fake::FileText(kFile)) << "ours until the server has it";
    ServerSends(Acknowledgement(kFirst));
    EXPECT_TRUE(IsNotice(pair->client.TakeReceived(),
                         "[Wrenlow] Tom is off line. Your message waits at the server."));
    EXPECT_FALSE(os::fake::FileText(kFile));

    ClientSends(Message(8, Im("Tom", Tlv(3, ""))));
    ServerSends(Refusal(8));
    ServerSends(Acknowledgement(kFirst + 1));
    toClient++;  // the notice
    EXPECT_EQ(pair->client.TakeReceived(), ToClient(Acknowledgement(8, "Tom")))
        << "as the client had asked, no second notice";
    EXPECT_TRUE(Rig::Reports().empty());
}

TEST_F(WaitingTest, AMessageThatNobodyTakesIsSentWhenTheBuddyComes) {
    Refuse();
    ServerSends(Refusal(kFirst));
    EXPECT_TRUE(IsNotice(pair->client.TakeReceived(), "Wrenlow will send your message when Tom is back."));
    ASSERT_EQ(TheWaitingMessages().All().size(), 1u);
    EXPECT_EQ(TheWaitingMessages().All()[0].tried, 1u);
    pair->server.TakeReceived();

    TheWaitingMessages().Forget();  // as after kill -9: only the file is left
    ServerSends(Arrival("somebody"));
    os::fake::AdvanceClock(5000);
    EXPECT_EQ(pair->server.TakeReceived(), "");
    ServerSends(Arrival("Tom 1"));
    os::fake::AdvanceClock(1000);
    EXPECT_EQ(pair->server.TakeReceived(), ToServer(Message(kFirst + 1, Im("tom1", Tlv(3, "")))));
    ServerSends(Acknowledgement(kFirst + 1));
    EXPECT_FALSE(os::fake::FileText(kFile));
}

TEST_F(WaitingTest, TwoSessionsOfOneNameSendOnce) {
    Keep(Im("tom1"));
    SignOn("me");
    auto second = rig.SignOn("me");
    ServerSends(Arrival("tom1"));
    second.server.Feed(Frame(2, 102, Arrival("tom1")));
    os::fake::AdvanceClock(3000);
    EXPECT_EQ(pair->server.TakeReceived(), ToServer(Message(kFirst, Im("tom1"))));
    EXPECT_EQ(second.server.TakeReceived().find(Im("tom1")), std::string::npos);
    // The one that sends breaks off before the answer: the other one may send then.
    End(pair->server);
    second.server.Feed(Frame(2, 103, Arrival("tom1")));
    os::fake::AdvanceClock(3000);
    EXPECT_NE(second.server.TakeReceived().find(Im("tom1")), std::string::npos);
}

TEST_F(WaitingTest, MessagesLeaveOneASecond) {
    for (int i = 0; i < 3; ++i) Keep(Im("tom1"));
    SignOn("me");
    ServerSends(Arrival("tom1"));
    for (std::uint32_t i = 0; i < 3; ++i) {
        os::fake::AdvanceClock(i == 0 ? 10 : 1000);
        EXPECT_EQ(pair->server.TakeReceived(), ToServer(Message(kFirst + i, Im("tom1"))));
    }
}

TEST_F(WaitingTest, SilenceProvesNothingUntilALaterQuestionIsAnswered) {
    Refuse();
    os::fake::AdvanceClock(90'000);  // the line may be dead
    EXPECT_EQ(pair->server.TakeReceived(), Probe(kFirst + 1));
    EXPECT_EQ(TheWaitingMessages().All().size(), 1u);
    ServerSends(SnacPayload(4, 5, kFirst + 1, "limits"));
    EXPECT_TRUE(TheWaitingMessages().All().empty());
    EXPECT_TRUE(IsNotice(pair->client.TakeReceived(), "Your message waits at the server."));
}

TEST_F(WaitingTest, AConnectionThatEndsBeforeTheAnswerCostsNoMessage) {
    Refuse();
    End(pair->server);
    TheWaitingMessages().Forget();
    SignOn("me");
    pair->server.TakeReceived();
    ServerSends(Arrival("tom1"));
    os::fake::AdvanceClock(1000);
    EXPECT_EQ(pair->server.TakeReceived(), ToServer(Message(kFirst, Im("tom1", Tlv(3, "")))));
}

TEST_F(WaitingTest, AFullDiskBehindTheOfferKeepsNothingTwice) {
    Refuse();
    os::fake::FailWrites(kFile, 28);
    ServerSends(Acknowledgement(kFirst));
    ServerSends(Arrival("tom1"));
    os::fake::AdvanceClock(5000);
    EXPECT_EQ(pair->server.TakeReceived(), "") << "the server has it, whatever the file says";
    EXPECT_EQ(Rig::Reports().size(), 1u);
    os::fake::FailWrites(kFile, 0);
    ServerSends(Arrival("somebody"));
    EXPECT_FALSE(os::fake::FileText(kFile)) << "written as soon as it can be";
}

TEST_F(WaitingTest, WhatIsNotOursPassesUntouched) {
    SignOn("me");
    ExpectUntouched(Message(1, Im("bob", Tlv(6, ""))), Refusal(1));  // its client knows how to have it stored
    ExpectUntouched(Message(2, Im("bob")), Refusal(2, 1));           // refused for another reason
    ExpectUntouched(Message(6, Im("bob", Tlv(4, ""))), Refusal(6));  // an automatic reply is of the moment
    ClientSends(Message(0, Im("bob")));
    pair->server.TakeReceived();
    toServer++;
    ExpectUntouched(Message(0, Im("ada")), Refusal(0));  // of two with one number nobody knows which
    ExpectUntouched(Message(3, Im("bob")), Refusal(4));  // another request
    modRegistry::WriteSetting("keepmessages", "0");
    ExpectUntouched(Message(5, Im("bob")), Refusal(5));
}

TEST_F(WaitingTest, AFileThatCannotBeReadOrWrittenCostsTheKeepingAndNoFrame) {
    const auto strangers = WaitingBytes({{0, 1, 0, "me", "bob", "bob", Im("ada"), false}});
    const std::string huge(WaitingMessages::kMaxFileBytes + 1, 'x');
    SignOn("me");
    std::uint32_t request = 7;
    for (const auto& bytes : {std::string("hostile"), strangers, huge}) {
        TheWaitingMessages().Forget();
        Rig::Reports().clear();
        os::fake::PutFile(kFile, bytes);
        for (int i = 0; i < 3; ++i) {
            ExpectUntouched(Message(request, Im("bob")), Refusal(request));
            ++request;
            ServerSends(Arrival("bob"));
            pair->client.TakeReceived();
            toClient++;
        }
        EXPECT_EQ(pair->server.TakeReceived(), "") << "nothing of it is sent";
        EXPECT_EQ(os::fake::FileText(kFile), bytes) << "what is not ours is left alone";
        EXPECT_EQ(Rig::Reports().size(), 1u);
    }
    os::RemoveFile(os::Path::FromText(kFile));
    TheWaitingMessages().Forget();
    os::fake::FailWrites(kFile, 28);
    ExpectUntouched(Message(request, Im("bob")), Refusal(request));
    EXPECT_TRUE(TheWaitingMessages().All().empty());
}

TEST_F(WaitingTest, AFileThatStandsStillIsLeftAloneForAMinute) {
    SignOn("me");
    os::fake::SlowWrites(kFile, 2000);
    os::fake::FailWrites(kFile, 5);
    for (std::uint32_t request = 1; request < 5; ++request) {
        ClientSends(Message(request, Im("bob")));
        ServerSends(Refusal(request));
    }
    EXPECT_EQ(os::fake::files.writes, 1u + 2u) << "two for the debug files";
}

struct FetchTest : WaitingTest {
    // The server offers its families, the client is ready, and so much time passes.
    void BeReady(std::int64_t milliseconds) {
        SignOn("me");
        ServerSends(Snac(1, 3, "00 01 00 04"_hex));
        ClientSends(Snac(1, 2, ""));
        pair->client.TakeReceived();
        toClient++;
        EXPECT_EQ(pair->server.TakeReceived(), ToServer(Snac(1, 2, "")));
        os::fake::AdvanceClock(milliseconds);
    }
    static ByteString Stored(const ByteString& message, std::int64_t sent) {
        return Snac(
            4, 7,
            IncomingData("tom1", Tlv(2, message) + Tlv(0x16, DWordToStr(static_cast<std::int32_t>(sent)))));
    }
    // What the client sees of a message.
    void Expect(const ByteString& sent, const ByteString& seen) {
        ServerSends(sent);
        EXPECT_EQ(pair->client.TakeReceived(), ToClient(seen));
    }
    static constexpr std::uint32_t kFetch = 0x57FFFFFF;
};

TEST_F(FetchTest, WhatWaitsIsFetchedForAClientThatDoesNotAsk) {
    os::fake::PutFile("/program/repl.dat", "");
    modRegistry::WriteSetting("logims", "1");
    modRegistry::WriteSetting("loghowhtm", "False");
    modRegistry::WriteSetting("logwhere", "/program");
    BeReady(1900);
    EXPECT_EQ(pair->server.TakeReceived(), "");
    os::fake::AdvanceClock(200);
    EXPECT_EQ(pair->server.TakeReceived(), ToServer(SnacPayload(4, 0x10, kFetch)));
    const auto old = kNow - 121;  // Sunday, 9 September 2001, 01:44:39
    Expect(Stored(MessageData("hi"), old), Stored(MessageData("[Sun 01:44] hi"), old));
    EXPECT_EQ(os::fake::FileText("/program/tom1 2001-09-09.txt"), "tom1 (01:44:39): hi\r\n");
    Expect(Stored(MessageData("hi"), kNow - 120), Stored(MessageData("hi"), kNow - 120));
    Expect(Stored("no message", old), Stored("no message", old));
    ByteString ucs2;
    for (const char c : std::string("[Sun 01:44] h")) ucs2 += {'\0', c};
    Expect(Stored(MessageData("00 68"_hex, 2), old), Stored(MessageData(ucs2, 2), old));
    ServerSends(Snac(4, 0x17, ""));
    ServerSends(SnacPayload(4, 1, kFetch, "00 01"_hex));
    EXPECT_EQ(pair->client.TakeReceived(), "") << "the end of what the client has not asked for";
    EXPECT_TRUE(Rig::Reports().empty());
}

TEST_F(FetchTest, AClientThatAsksItselfGetsItsOwnAnswer) {
    BeReady(1000);
    ClientSends(SnacPayload(4, 0x10, 9));
    os::fake::AdvanceClock(5000);
    EXPECT_EQ(pair->server.TakeReceived(), ToServer(SnacPayload(4, 0x10, 9)));
    Expect(SnacPayload(4, 0x17, 9), SnacPayload(4, 0x17, 9));
    modRegistry::WriteSetting("fetchmessages", "0");
    BeReady(5000);
    EXPECT_EQ(pair->server.TakeReceived(), "");
}

TEST(RateLimit, HoldsMessagesBackBeforeTheServerWarns) {
    // One class of window 10, clear 5000, warning 4000, ignored 3000, cut off 2000, now 6000, highest 6000,
    // and the five bytes that newer servers add; family 4, subtype 6 is in it.
    const auto numbers = [](std::initializer_list<std::int32_t> list) {
        ByteString bytes;
        for (const auto number : list) bytes += DWordToStr(number);
        return bytes;
    };
    const auto head = "00 01 00 01"_hex + numbers({10, 5000, 4000, 3000, 2000, 6000, 6000});
    const auto members = "00 01 00 02 00 01 00 02 00 04 00 06"_hex;
    for (const auto& data : {head + "00 00 00 00 00"_hex + members, head + members}) {
        RateLimit limit(4, 6);
        limit.Read(data);
        limit.Count(100'000);
        int sent = 0;
        for (; limit.Allows(100'000) && sent < 100; ++sent) limit.Count(100'000);
        EXPECT_EQ(sent, 1);
        EXPECT_FALSE(limit.Allows(101'000));
        EXPECT_TRUE(limit.Allows(110'000));
        limit.ReadChange("00 02 00 01"_hex + numbers({10, 5000, 4000, 3000, 2000, 3900, 6000}));
        EXPECT_FALSE(limit.Allows(110'000)) << "the server has warned";
        limit.Read(data.substr(0, 20));
        EXPECT_TRUE(limit.Allows(100'000)) << "what cannot be understood sets no limit";
    }
}
