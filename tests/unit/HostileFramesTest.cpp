// Whatever a frame or a request holds, it goes on as it came, the sockets stay as they were, and a
// conversation beside it loses nothing. All features are on; the fuzz target of the pair goes further in the
// same direction.
#include "app/services/modRegistry.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

class HostileFrames : public testing::Test {
 protected:
    HostileFrames() {
        os::fake::PutFile("/program\\repl.dat", "somebody else\r\nFred\r\n");
        modRegistry::WriteSetting("logwhere", "/logs");
        for (const char* name : {"logims", "logfolder", "seehtml", "keepmessages", "fetchmessages"})
            modRegistry::WriteSetting(name, "1");
        bystander_.emplace(rig_.SignOn("bystander"));
    }

    // One message each way, with the numbers that only an undisturbed pair has.
    void ExpectUndisturbedBystander() {
        const auto hello = Frame(2, ++fromClient_, "a message");
        bystander_->client.Feed(hello);
        ASSERT_EQ(bystander_->server.TakeReceived(), hello);
        const auto answer = Frame(2, ++fromServer_, "an answer");
        bystander_->server.Feed(answer);
        ASSERT_EQ(bystander_->client.TakeReceived(), answer);
        ASSERT_EQ(os::fake::OpenSocketCount(), 2 * openPairs);
    }

    std::size_t openPairs = 1;  // the bystander's
    Rig rig_;

 private:
    std::optional<Rig::Pair> bystander_;
    std::int32_t fromClient_ = 1, fromServer_ = 101;
};

// The data cut at every position, and with every byte made a length of nothing, too much and far too much.
std::vector<ByteString> Damaged(const ByteString& data) {
    std::vector<ByteString> damaged;
    for (std::size_t at = 0; at < data.size(); ++at) {
        damaged.push_back(data.substr(0, at));
        for (const char byte : {'\x00', '\x7F', '\xFF'}) {
            damaged.push_back(data);
            damaged.back()[at] = byte;
        }
    }
    return damaged;
}

}  // namespace

TEST_F(HostileFrames, NoDamagedLengthLosesOrChangesAFrame) {
    // Each kind of frame that a feature looks into, well-formed; the last one may be rewritten when it stays
    // so.
    const auto userInfo = "00 00 00 01"_hex + Tlv(1, "00 10"_hex);
    const struct {
        const char* what;
        std::int32_t family, subtype;
        ByteString data;
        bool mayBeRewritten = false;
    } kinds[] = {
        {"sign-on request", 0x17, 2, Tlv(1, "My Name") + Tlv(0x25, "0123456789abcdef")},
        {"self-information", 1, 0xF, Named("My Name") + userInfo},
        {"outgoing message", 4, 6, OutgoingData("Tom", Tlv(2, MessageData("hi")) + Tlv(3, ""))},
        {"incoming message", 4, 7, IncomingData("Tom", Tlv(2, MessageData("hi")))},
        {"limits", 1, 7,
         "00 01 00 01"_hex + ByteString(28, 'x') + "00 00 00 00 00"_hex + "00 01 00 01 00 04 00 06"_hex},
        {"buddies", 3, 0xB, Named("Tom") + userInfo},
        {"refusal", 4, 1, "00 04"_hex},
        {"user information", 2, 6, Named("Tom") + userInfo + Tlv(1, "text") + Tlv(2, "x"), true},
    };
    auto [client, server] = rig_.ConnectTalking();
    openPairs = 2;
    std::int32_t fromClient = 2, fromServer = 101;
    const auto passes = [&](const ByteString& payload, std::size_t compared) {
        Rig::Reports().clear();
        client.Feed("\xFF" + Frame(2, 0, payload).substr(1));  // marker and number are put right
        server.Feed(Frame(2, 0, payload));
        EXPECT_EQ(server.TakeReceived().substr(0, compared),
                  Frame(2, fromClient++, payload).substr(0, compared));
        EXPECT_EQ(client.TakeReceived().substr(0, compared),
                  Frame(2, fromServer++, payload).substr(0, compared));
        EXPECT_LE(Rig::Reports().size(), 2u);
    };
    for (const auto& kind : kinds) {
        const auto compared = kind.mayBeRewritten ? std::size_t{4} : ByteString::npos;
        SCOPED_TRACE(kind.what);
        for (std::size_t length = 0; length < 10; ++length)  // shorter than a SNAC's header
            passes(Snac(kind.family, kind.subtype, "").substr(0, length), ByteString::npos);
        for (const auto& data : Damaged(kind.data)) {
            passes(Snac(kind.family, kind.subtype, data), compared);
            ASSERT_FALSE(HasFailure()) << HexDump(data);
        }
        ExpectUndisturbedBystander();
    }
}

TEST_F(HostileFrames, FortyThousandConnectionsLaterASlotNumberIsStillWhole) {
    for (int i = 0; i < 40'000; ++i) End(rig_.ConnectSilently());
    auto [client, server] = rig_.SignOn("late");
    openPairs = 2;
    EXPECT_EQ(modSocket::ConnIndex("LATE"), 40'001u);
    modSocket::SetIdle("late", 1);
    EXPECT_EQ(server.TakeReceived(), Frame(2, 2, Snac(1, 0x11, "00 00 00 3C"_hex)));
    ExpectUndisturbedBystander();
}
