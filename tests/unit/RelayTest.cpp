// The relay between a client and a server: handshake, numbering, closing, and what never happens to a frame.
#include "tests/unit/Rig.h"

using namespace std::string_literals;

TEST(Handshake, TheServersFirstBytesWaitForTheClientButNotForever) {
    for (const bool clientSpeaks : {true, false}) {
        Rig rig;
        auto [client, server] = rig.ConnectPair();
        server.Feed(Frame(1, 100, "hello"));
        EXPECT_EQ(client.Received(), "");
        if (clientSpeaks) client.Feed("*");  // any byte shows that the reply has been read
        os::fake::AdvanceClock(clientSpeaks ? 0 : 50);
        EXPECT_EQ(client.Received(), Frame(1, 100, "hello")) << clientSpeaks;
    }
}

// The user name and its NUL come in the first send or in later ones, before the reply or behind it. Without
// them the request ends where the first frame begins.
TEST(Handshake, NothingOfARequestInPiecesIsReadAsAFrame) {
    const auto hello = Frame(1, 1, "00 00 00 01"_hex);
    const auto arrives = [&](const ByteString& request, std::size_t cut, bool replyBetween) {
        Rig rig;
        auto& client = Rig::ConnectSilently();
        client.Feed(request.substr(0, cut));
        const bool connects = cut >= 8;
        if (connects && replyBetween) Accept(Rig::LastServer());
        for (const char c : request.substr(cut)) client.Feed(std::string(1, c));
        if (!connects || !replyBetween) Accept(Rig::LastServer());
        client.Feed(hello);
        EXPECT_EQ(Rig::LastServer().Received(), hello) << request << cut << replyBetween;
    };
    for (const auto& user : {"user name\0"s, ""s}) {
        const auto request = Rig::kRequest.substr(0, 8) + user;
        for (std::size_t cut = 1; cut <= request.size(); ++cut) {
            for (const bool replyBetween : {true, false}) arrives(request, cut, replyBetween);
        }
    }
}

TEST(Handshake, WhatTheClientSendsBeforeTheReplyIsDropped) {
    Rig rig;
    auto& client = rig.Connect();
    client.Feed(Frame(1, 1, "too early") + "and more");
    Accept(Rig::LastServer());
    client.Feed(Frame(1, 1, "hello"));
    EXPECT_EQ(Rig::LastServer().Received(), Frame(1, 1, "hello"));
}

TEST(Handshake, WhatABrowserSendsIsClosedWithoutAWord) {
    for (const char* bytes : {"POST / H", "GET / HTTP/1.1\r\n\r\n"}) {
        Rig rig;
        auto& client = Rig::ConnectSilently();
        client.Feed(bytes);
        EXPECT_TRUE(client.SawClose()) << bytes;
        EXPECT_EQ(client.Received(), "");
        EXPECT_EQ(os::fake::OutgoingCount(), 0u);
        EXPECT_TRUE(Rig::Reports().empty());
    }
}

// Direct messages, files and TLS: whoever speaks first, in whatever pieces, and whatever the other side
// sends.
TEST(Relay, BytesThatAreNoFramesPassBothWays) {
    for (const auto& beginning : {"ODC2"s, "OFT2"s, "OFT3"s, "\x16\x03\x01\x02"s}) {
        for (const bool clientBegins : {true, false}) {
            for (const std::size_t piece : {1u, 3u, 100u}) {
                Rig rig;
                auto [client, server] = rig.ConnectPair();
                auto& first = clientBegins ? client : server;
                auto& second = clientBegins ? server : client;
                if (!clientBegins) os::fake::AdvanceClock(50);  // the client has read its reply
                second.Feed("OF");
                if (!clientBegins) {
                    EXPECT_EQ(server.Received(), "");
                }
                const auto text = beginning + "*\2\0\0 no header"s;
                for (std::size_t at = 0; at < text.size(); at += piece) first.Feed(text.substr(at, piece));
                os::fake::AdvanceClock(50);
                second.Feed("\2\0\0*"s);
                os::fake::AdvanceClock(2000);
                EXPECT_EQ(second.Received(), text) << clientBegins << piece;
                EXPECT_EQ(first.Received(), "OF\2\0\0*"s) << clientBegins << piece;
                End(first);
                EXPECT_TRUE(second.SawClose());
            }
        }
    }
}

TEST(Relay, TheServersGoodbyeArrivesAsAnEmptyFrame) {
    const auto goodbye = "2A 04 00 66"_hex;
    for (const bool alone : {true, false}) {
        Rig rig;
        auto [client, server] = rig.ConnectTalking();
        server.Feed(Frame(2, 101, "x") + (alone ? "" : goodbye));
        if (alone) server.Feed(goodbye);
        EXPECT_EQ(client.TakeReceived(), Frame(2, 101, "x"));
        os::fake::AdvanceClock(1499);
        EXPECT_EQ(client.Received(), "");
        os::fake::AdvanceClock(1);
        if (alone) {  // may be the beginning of a header, until the server closes
            EXPECT_EQ(client.Received(), "");
            End(server);
        }
        EXPECT_EQ(client.Received(), goodbye + "00 00"_hex) << alone;
        EXPECT_EQ(client.SawClose(), alone);
    }
}

TEST(Close, AFrameThatIsNotFinishedGoesWithItsSender) {
    for (const auto& part :
         {"2A"_hex, "2A 02 00"_hex, "2A 02 00 66 10 00"_hex, "2A 02 00 66 10 00 'part'"_hex}) {
        for (const bool isReset : {false, true}) {
            Rig rig;
            auto [client, server] = rig.ConnectTalking();
            server.Feed(Frame(2, 101, "whole") + part);
            isReset ? server.Reset() : server.Close();
            net::ProcessPendingEvents();
            EXPECT_EQ(client.Received(), Frame(2, 101, "whole")) << HexDump(part);
            EXPECT_TRUE(client.SawClose());
        }
    }
}

TEST(Close, KeepsSlotAndOriginalNameAndNothingElse) {
    Rig rig;
    auto [client, server] = rig.SignOn("Some User");
    auto* const connection = modSocket::Connection(0);
    EXPECT_EQ(connection->hasScreenName(), "Some User");
    End(client);
    connection->CloseConnection();  // once more
    EXPECT_TRUE(server.SawClose());
    EXPECT_EQ(modSocket::Connection(0), connection);
    EXPECT_EQ(connection->hasScreenName(), "");
    EXPECT_EQ(connection->hasScreenNameOrig(false), "");
    EXPECT_EQ(connection->hasScreenNameOrig(true), "Some User");
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
}

TEST(Registry, ARequestThatIsGoneIsReported) {
    Rig rig;
    modSocket::NewLocalConnection(424242);
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].where, "modSocket:NewLocalConnection");
}

TEST(Registry, ListsEachUserOnceUnlessTheOriginalNameIsShown) {
    const auto list = [](bool includeAll, bool showOriginal) {
        std::vector<std::string> entries;
        for (const auto& [name, original] : modSocket::ListScreenNames(includeAll, showOriginal))
            entries.push_back(showOriginal ? name + "/" + original : name);
        return entries;
    };
    using Entries = std::vector<std::string>;
    Rig rig;
    rig.ConnectTalking();  // not signed on
    EXPECT_EQ(list(true, false), Entries{"(all)"});
    rig.SignOn("Some User");
    rig.SignOn("someuser");
    EXPECT_EQ(list(true, false), (Entries{"(all)", "Some User"}));
    EXPECT_EQ(list(false, true), (Entries{"Some User/Some User", "someuser/someuser"}));
}

namespace {

const auto kTold = "2A 04 00 66"_hex;  // a goodbye that follows frame 101

// Frames of ten bytes behind a first one, so many that a client that takes nothing stops the reading.
ByteString LongStream(std::size_t first) {
    ByteString stream = Frame(2, 101, ByteString(first, 'x'));
    for (int number = 102; stream.size() < net::kQueueLimit + 100'000; ++number)
        stream += Frame(2, number & 0xFFFF, "abcd");
    return stream;
}

}  // namespace

TEST(Relay, NoSilenceTearsAFrameWhoseRestWaitsForAStuckClient) {
    for (std::size_t first = 0; first < 10; ++first) {
        Rig rig;
        auto [client, server] = rig.ConnectTalking();
        const auto stream = LongStream(first);
        client.LimitReceived(0);
        server.Feed(stream);
        os::fake::AdvanceClock(5000);
        client.LimitReceived(SIZE_MAX);
        os::fake::AdvanceClock(5000);
        ASSERT_TRUE(client.Received() == stream) << first;
    }
}

TEST(Relay, AStuckReceiverHoldsItsSenderBackEitherWay) {
    for (const bool towardServer : {true, false}) {
        Rig rig;
        auto [client, server] = rig.ConnectTalking();
        auto& source = towardServer ? client : server;
        auto& sink = towardServer ? server : client;
        std::string stream;
        for (std::int32_t i = 0; i < 40; ++i)
            stream += Frame(2, (towardServer ? 2 : 101) + i, ByteString(50'000, 'x'));
        sink.LimitReceived(0);
        source.Feed(stream);
        EXPECT_GT(source.Unread(), stream.size() / 2) << "what is not read costs no memory";
        sink.LimitReceived(SIZE_MAX);
        os::fake::AdvanceClock(1000);
        EXPECT_TRUE(sink.Received() == stream);
    }
}

TEST(Relay, BytesThatCameMeanwhileAreReadBeforeSilenceIsBelieved) {
    Rig rig;
    auto [client, server] = rig.ConnectTalking();
    server.Feed(Frame(2, 101, "x") + kTold);
    os::fake::MoveClock(2000);  // the program was stopped
    server.Send("00 01 79"_hex);
    os::fake::InterruptWait();
    os::fake::AdvanceClock(2000);
    EXPECT_EQ(client.Received(), Frame(2, 101, "x") + Frame(4, 102, "y"));
}

TEST(Relay, AResetComesBehindAllThatWasReceived) {
    struct Row {
        const char* name;
        bool held, stuck;
    };
    for (const auto& row :
         {Row{"read", false, false}, Row{"held", true, false}, Row{"paused", false, true}}) {
        SCOPED_TRACE(row.name);
        Rig rig;
        auto [client, server] = row.held ? rig.ConnectPair() : rig.ConnectTalking();
        const auto stream = row.stuck ? LongStream(0) : Frame(2, 101, "greeting") + kTold;
        const auto expected = row.stuck ? stream : stream + "00 00"_hex;
        if (row.stuck) client.LimitReceived(0);
        server.Send(stream);
        server.Reset();
        os::fake::AdvanceClock(row.held ? 40 : 4000);
        if (row.held || row.stuck) {
            EXPECT_EQ(client.Received(), "");
        }
        client.LimitReceived(SIZE_MAX);
        os::fake::AdvanceClock(100);
        EXPECT_TRUE(client.Received() == expected);
        EXPECT_TRUE(client.SawClose());
        EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
    }
}

TEST(Relay, ASystemWithoutBuffersIsAskedAgainThoughItTellsNothing) {
    Rig rig;
    auto [client, server] = rig.ConnectTalking();
    os::fake::RefuseSends(3);
    server.Feed(Frame(2, 101, "x"));
    EXPECT_EQ(client.Received(), "");
    os::fake::AdvanceClock(1000);
    EXPECT_EQ(client.Received(), Frame(2, 101, "x"));
}

TEST(Close, ASlowReceiverGetsAllAndAStuckOneIsGivenUpAndReported) {
    for (const bool isStuck : {false, true}) {
        Rig rig;
        auto [client, server] = rig.ConnectTalking();
        const auto stream = Frame(2, 101, ByteString(60'000, 'x'));
        client.LimitReceived(0);
        server.Feed(stream);
        End(server);
        ByteString received;
        for (int seconds = 0; seconds < 63; seconds += 9) {
            client.LimitReceived(isStuck ? 0 : 10'000);
            os::fake::AdvanceClock(9000);
            received += client.TakeReceived();
        }
        EXPECT_EQ(received == stream, !isStuck);
        EXPECT_EQ(client.SawReset(), isStuck);
        EXPECT_EQ(Rig::Reports().size(), isStuck ? 1u : 0u);
    }
}

TEST(Names, WhoeverAsksForDeadNamesDelaysNobodyAndIsToldInTime) {
    Rig rig;
    const auto request = [](const ByteString& host) {
        return "04 01 14 46 00 00 00 01 00"_hex + host + ByteString(1, '\0');
    };
    for (int i = 0; i < 20; ++i) {
        auto& client = Rig::ConnectSilently();
        client.Feed(request("dead" + std::to_string(i) + ".unanswered"));
        End(client);
    }
    auto& waiting = Rig::ConnectSilently();
    waiting.Feed(request("one.unanswered"));
    Rig::ConnectSilently().Feed(request("alive.example"));
    EXPECT_EQ(Rig::LastServer().Host(), "alive.example");
    os::fake::AdvanceClock(9'999);
    EXPECT_FALSE(waiting.SawClose());
    os::fake::AdvanceClock(1);
    EXPECT_TRUE(waiting.SawClose());
}
