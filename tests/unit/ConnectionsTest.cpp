// What the relay tells of its connections, and where it leads them.
#include "app/services/modRegistry.h"
#include "features/connections/ConnectionsReport.h"
#include "os/fake/FakeClock.h"
#include "tests/unit/Rig.h"

namespace {

using State = SignOnState;

constexpr char kPublic[] = "203.0.113.5";
constexpr char kSecret[] = "ticket-0123";

ByteString RequestFor(const std::string& address, std::int32_t port) {
    const auto parsed = os::AddressFrom(address).value();
    return "04 01"_hex + WordToStr(port) + ByteString(parsed.bytes.begin(), parsed.bytes.begin() + 4) +
           "00"_hex;
}

struct ConnectionsTest : testing::Test {
    os::fake::Peer& Ask(const std::string& address, std::int32_t port = 5190) {
        auto& client = Rig::ConnectSilently();
        client.Feed(RequestFor(address, port));
        return client;
    }
    static void Set(const char* name, const char* value) { modRegistry::WriteSetting(name, value); }

    // The first step of a sign-on at a server, which answers with these TLVs.
    void Authorise(const ByteString& answer, const std::string& address = kPublic) {
        auto& client = Ask(address);
        auto& server = Rig::LastServer();
        Accept(server);
        client.Feed(Frame(1, 1, "00 00 00 01"_hex));
        server.Feed(Frame(1, 100, "00 00 00 01"_hex));
        client.Feed(Frame(2, 2, Snac(0x17, 2, Tlv(1, "My Name") + Tlv(0x25, "hash-of-password"))));
        client.TakeReceived();
        server.Feed(Frame(2, 101, Snac(0x17, 3, Tlv(1, "My Name") + answer)));
        answer_ = client.TakeReceived();
        End(server);
    }
    static ByteString SentTo(const std::string& address) { return Tlv(5, address) + Tlv(6, kSecret); }

    // The session that follows, at the server that was reached last.
    Rig::Pair BeginSession(os::fake::Peer& client) {
        auto& server = Rig::LastServer();
        Accept(server);
        client.Feed(Frame(1, 1, "00 00 00 01"_hex + Tlv(6, kSecret)));
        server.Feed(Frame(1, 100, "00 00 00 01"_hex));
        server.Feed(Frame(2, 101, Snac(1, 3, "00 01 00 02 00 04"_hex)));
        return {client, server};
    }
    Rig::Pair SignOn() {
        Authorise(SentTo("203.0.113.6:5190"));
        auto pair = BeginSession(Ask("203.0.113.6"));
        pair.server.Feed(Frame(2, 102, Snac(1, 0xF, Named("My Name"))));
        pair.server.Feed(Frame(5, 103, ""));  // the news comes with the next frame
        return pair;
    }

    SignOnVerdict Verdict() { return rig_.TheOverview().Verdict(); }

    Rig rig_;
    ByteString answer_;
};

// Each place that is tried when all but the last refuse or do not answer.
std::string PlacesTried(std::size_t first) {
    std::string text;
    for (auto i = first; i < os::fake::OutgoingCount(); ++i) {
        auto& server = os::fake::Outgoing(i);
        text += server.Host() + ":" + std::to_string(server.Port()) + " ";
        server.RefuseConnect();
    }
    return text;
}

}  // namespace

TEST_F(ConnectionsTest, AClientThatIsSentToAnUnreachableAddressGetsToTheServerAllTheSame) {
    const struct {
        const char *server, *always, *fallback;
        const char* advertised;  // with its port
        const char* asked;
        std::int32_t port;
        const char* tried;
    } cases[] = {
        {" ", "0", "1", "198.51.100.9:5191", "198.51.100.9", 5191,
         "198.51.100.9:5191 203.0.113.5:5191 203.0.113.5:5190 "},
        {" ", "0", "1", "127.0.0.1:5191", "127.0.0.1", 5191, "203.0.113.5:5191 203.0.113.5:5190 "},
        {" ", "0", "1", "192.168.7.7:5190", "192.168.7.7", 5190, "203.0.113.5:5190 "},
        {" ", "0", "0", "10.9.9.9:5190", "10.9.9.9", 5190, "10.9.9.9:5190 "},
        {"203.0.113.5:7000", "0", "1", "10.9.9.9:5191", "10.9.9.9", 5191,
         "203.0.113.5:5191 203.0.113.5:7000 "},
        {"203.0.113.5", "1", "0", "198.51.100.9:5191", "198.51.100.9", 5191,
         "203.0.113.5:5191 203.0.113.5:5190 "},
        // By a name that the client looks up itself.
        {" ", "0", "1", "bos.example.org:5190", "10.9.9.9", 5190, "203.0.113.5:5190 "},
        // Of its own accord.
        {" ", "0", "1", "10.9.9.9:5190", "10.9.9.8", 5190, "10.9.9.8:5190 "},
    };
    for (const auto& [server, always, fallback, advertised, asked, port, tried] : cases) {
        os::fake::AdvanceClock(120'000);  // words of servers do not count for ever
        Set("server", server);
        Set("server-always", always);
        Set("server-fallback", fallback);
        Authorise(SentTo(advertised));
        const auto first = os::fake::OutgoingCount();
        auto& client = Ask(asked, port);
        EXPECT_EQ(PlacesTried(first), tried) << advertised;
        EXPECT_TRUE(client.SawClose() || client.SawReset()) << advertised;
    }
    Set("server", "chosen.example.org:6000");
    EXPECT_EQ((Ask("198.51.100.77"), Rig::LastServer().Host()), "chosen.example.org");
    EXPECT_EQ(Rig::LastServer().Port(), 6000);
}

TEST_F(ConnectionsTest, AnAddressThatDoesNotAnswerIsGivenFiveSecondsAndTheReplyStaysTheClients) {
    Authorise(SentTo("198.51.100.9:5190"));
    auto& client = Ask("198.51.100.9");
    EXPECT_EQ(Rig::LastServer().Host(), "198.51.100.9");
    os::fake::AdvanceClock(Router::kPatienceMs + 10);
    EXPECT_EQ(Rig::LastServer().Host(), kPublic);
    Accept(Rig::LastServer());
    EXPECT_EQ(client.TakeReceived(), "00 5A 14 46 C6 33 64 09"_hex);
    client.Feed(Frame(1, 1, "00 00 00 01"_hex));
    EXPECT_EQ(Rig::LastServer().TakeReceived(), Frame(1, 1, "00 00 00 01"_hex));
    Rig::LastServer().Feed(Frame(1, 7, "00 00 00 01"_hex));
    EXPECT_EQ(client.TakeReceived(), Frame(1, 7, "00 00 00 01"_hex));
}

TEST_F(ConnectionsTest, AnAddressOfIPv6IsAskedForByANumberOfOurOwn) {
    Authorise(SentTo("[2001:db8::7]:5191"));
    EXPECT_NE(answer_.find(Tlv(5, "127.0.0.101:5191") + Tlv(6, kSecret)), std::string::npos);
    Ask("127.0.0.101", 5191);
    EXPECT_EQ(Rig::LastServer().Host(), "2001:db8::7");
    EXPECT_EQ(Rig::LastServer().Port(), 5191);
    Authorise(SentTo("203.0.113.6:5190"));
    EXPECT_NE(answer_.find(SentTo("203.0.113.6:5190")), std::string::npos);
}

TEST_F(ConnectionsTest, TheVerdictSaysWhatBecameOfTheLastSignOn) {
    struct Case : ConnectionsTest {
        void TestBody() override {}
    };
    const struct {
        State state;
        const char* text;
        void (*happens)(Case&);
    } cases[] = {
        {State::NoClient, "No client has connected yet.", [](Case&) {}},
        {State::ClientNotSetUp, "No client has connected yet. AIM runs, but it is not set up to use Wrenlow.",
         [](Case& test) {
             test.rig_.TheOverview().client = {true, true, false};
         }},
        {State::SigningOn, "AIM is connecting to 203.0.113.5:5190.", [](Case& test) { test.Ask(kPublic); }},
        {State::ConnectionRefused,
         "The server 203.0.113.5:5190 refuses the connection: nothing listens there.",
         [](Case& test) {
             test.Ask(kPublic);
             Rig::LastServer().RefuseConnect();
         }},
        {State::NoAnswer, "The server 203.0.113.5:5190 does not answer; AIM gave up.",
         [](Case& test) { End(test.Ask(kPublic)); }},
        {State::NoAnswer, "The server 203.0.113.5:5190 does not answer.",
         [](Case& test) {
             test.Ask(kPublic);
             Rig::LastServer().RefuseConnect(10060);
         }},
        {State::NameUnknown, "The server's name nobody.invalid is not known.",
         [](Case&) {
             Rig::ConnectSilently().Feed("04 01 14 46 00 00 00 01 00"_hex + "nobody.invalid" + "00"_hex);
         }},
        {State::Refused, "The server refused to sign My Name on: The password is wrong (error 5).",
         [](Case& test) { test.Authorise(Tlv(8, "00 05"_hex)); }},
        {State::SentAstray,
         "The server sent AIM to 198.51.100.9:5190, which cannot be reached from here. Its operator must "
         "change the address that it advertises.",
         [](Case& test) {
             test.Authorise(SentTo("198.51.100.9:5190"));
             const auto first = os::fake::OutgoingCount();
             test.Ask("198.51.100.9");
             PlacesTried(first);
         }},
        {State::SignedOn, "My Name is signed on.", [](Case& test) { test.SignOn(); }},
        {State::SignedOnElsewhere, "My Name was signed off because the same name has signed on elsewhere.",
         [](Case& test) {
             auto pair = test.SignOn();
             pair.server.Feed(Frame(4, 104, Tlv(9, "00 01"_hex) + Tlv(0xB, "http://x")));
             End(pair.server);
         }},
        {State::Slowed,
         "My Name is signed on, but has sent too much too fast: the server takes nothing more until that has "
         "been quiet for a while.",
         [](Case& test) { test.SignOn().server.Feed(Frame(2, 104, Snac(1, 0xA, "00 03"_hex))); }},
        {State::CutByRateLimit, "The server ended the session of My Name, which had sent too much too fast.",
         [](Case& test) {
             auto pair = test.SignOn();
             pair.server.Feed(Frame(2, 104, Snac(1, 0xA, "00 03"_hex)));
             End(pair.server);
         }},
        {State::EndedByServer,
         "The server 203.0.113.6:5190 ended the connection before My Name was signed on, and gave no reason.",
         [](Case& test) {
             test.Authorise(SentTo("203.0.113.6:5190"));
             End(test.BeginSession(test.Ask("203.0.113.6")).server);
         }},
        {State::EndedByClient, "AIM ended the connection before My Name was signed on.",
         [](Case& test) {
             test.Authorise(SentTo("203.0.113.6:5190"));
             End(test.BeginSession(test.Ask("203.0.113.6")).client);
         }},
        {State::SignedOff, "My Name was signed on; the session was ended by the client.",
         [](Case& test) { End(test.SignOn().client); }},
        {State::SignedOff, "My Name was signed on; the session was ended by the server.",
         [](Case& test) { End(test.SignOn().server); }},
    };
    for (const auto& [state, text, happens] : cases) {
        Case test;
        happens(test);
        net::ProcessPendingEvents();
        const auto verdict = test.Verdict();
        EXPECT_EQ(verdict.text, text);
        EXPECT_EQ(verdict.state, state) << text;
    }
}

TEST_F(ConnectionsTest, ALegIsToldWithItsPurposeItsCountsAndItsEndAndNothingSecret) {
    auto pair = SignOn();
    auto& connections = rig_.TheOverview().connections;
    connections.Refresh();
    const auto& leg = connections.Legs().back();
    EXPECT_EQ(leg.name, "My Name");
    EXPECT_EQ(PurposeText(leg), "BOS");
    EXPECT_EQ(ReachedText(leg), "203.0.113.6:5190");
    EXPECT_TRUE(leg.isSent);
    EXPECT_EQ(leg.fromClient.frames, 1u);
    EXPECT_EQ(leg.fromServer.frames, 4u);
    EXPECT_EQ(leg.fromServer.bytes, Frame(1, 1, "1234").size() + Frame(2, 1, Snac(1, 3, "123456")).size() +
                                        Frame(2, 1, Snac(1, 15, Named("My Name"))).size() +
                                        Frame(5, 1, "").size());
    pair.server.Feed(Frame(2, 104, Snac(4, 7, IncomingData("Buddy", Tlv(2, MessageData("hello there"))))));
    const auto report = ConnectionsReport("wrenlow.exe", connections, {});
    for (const char* hidden : {kSecret, "hash-of-password", "Buddy", "hello there"})
        EXPECT_EQ(report.find(hidden), std::string::npos) << hidden;
    EXPECT_NE(report.find("203.0.113.6:5190"), std::string::npos) << report;
    EXPECT_NE(report.find("Verdict: My Name is signed on."), std::string::npos) << report;
}

TEST_F(ConnectionsTest, TheLastFiveHundredAreKept) {
    SignOn();
    for (std::size_t i = 0; i < Connections::kMaxLegs + 5; ++i) End(Ask(kPublic));
    const auto& legs = rig_.TheOverview().connections.Legs();
    EXPECT_EQ(legs.size(), Connections::kMaxLegs);
    EXPECT_TRUE(legs.front().isSignedOn) << "an open session outlasts the short ones";
    EXPECT_EQ(Verdict().state, State::SignedOn);
}
