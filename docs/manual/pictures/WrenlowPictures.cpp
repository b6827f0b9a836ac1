#include "app/windows/SharedForm.h"
#include "desktop/frmWrenlow.h"
#include "docs/manual/pictures/Picture.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

using os::fake::Peer;

const ByteString kHello = "00 00 00 01"_hex;

// The row of the first message.
constexpr int kMessage = 13;

// A client asks for a server by its address, and gets it.
Rig::Pair Connect(const ByteString& address) {
    auto& client = Rig::ConnectSilently();
    client.Feed("04 01 14 46"_hex + address + "00"_hex);
    auto& server = Rig::LastServer();
    Accept(server);
    client.Feed(Frame(1, 1, kHello));
    server.Feed(Frame(1, 100, kHello));
    return {client, server};
}

// What one side says, in frames with numbers of their own.
struct Voice {
    Peer& peer;
    std::int32_t number;

    void Say(std::int32_t family, std::int32_t subtype, const ByteString& data) {
        peer.Feed(Frame(2, number++, Snac(family, subtype, data)));
        os::fake::AdvanceClock(37);
        ++os::fake::timeOfDay.secondsSince1970;
    }
};

void SignOn() {
    auto first = Connect("C6 33 64 0A"_hex);
    Voice client{first.client, 2}, server{first.server, 101};
    client.Say(0x17, 6, Tlv(1, "Walter"));
    server.Say(0x17, 7, Named("123456789"));
    client.Say(0x17, 2, Tlv(1, "Walter") + Tlv(0x25, "0123456789abcdef") + Tlv(3, "AOL Instant Messenger"));
    server.Say(0x17, 3, Tlv(1, "Walter") + Tlv(5, "198.51.100.11:5190") + Tlv(6, "0123456789abcdef"));
    End(first.server);
    os::fake::AdvanceClock(600);
}

void Talk() {
    auto session = Connect("C6 33 64 0B"_hex);
    Voice client{session.client, 2}, server{session.server, 101};
    server.Say(1, 3, "00 01 00 02 00 03 00 04 00 09 00 13"_hex);
    server.Say(1, 0xF, Named("Walter"));
    client.Say(1, 2, "00 01 00 03 01 10 04 7B"_hex);
    server.Say(3, 0xB, Named("wilma99") + "00 00 00 01 00 01 00 02 00 10"_hex);
    server.Say(4, 7, IncomingData("wilma99", Tlv(2, MessageData("Tea at four?"))));
    client.Say(4, 6, OutgoingData("Aunt Wilma", Tlv(2, MessageData("With pleasure."))));
    client.Say(2, 4, Tlv(3, "text/aolrtf; charset=\"us-ascii\"") + Tlv(4, "Out for tea"));
    server.Say(4, 7, IncomingData("wilma99", Tlv(2, MessageData("I have made scones."))));
    auto icons = Connect("C6 33 64 0C"_hex);
    Voice iconServer{icons.server, 101};
    iconServer.Say(1, 3, "00 01 00 10"_hex);
    iconServer.Say(1, 0xF, Named("Walter"));
}

}  // namespace

void WrenlowPictures() {
    Rig rig;
    os::fake::PutFile("/program/repl.dat", "wilma99\r\nAunt Wilma\r\n");
    os::fake::timeOfDay.local = {2026, 11, 22, 20, 15, 0};
    os::fake::timeOfDay.secondsSince1970 = 1'795'378'500;  // the same moment
    auto& form = SharedForm<frmWrenlow>();
    form.Start("Traffic");
    SignOn();
    Talk();
    os::fake::AdvanceClock(WrenlowPage::kRefreshMs);
    os::fake::DialogUser user(form.Window());
    user.Choose("trFrames", kMessage);
    form.Window().ShowRow("trFrames", kMessage + 2);
    Picture(form.Window(), "traffic");
    user.Choose("SSTab1", 0);
    Picture(form.Window(), "connections");
    UnloadForms();
}
