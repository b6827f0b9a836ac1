// A pair of sockets at work: hostile bytes from both sides in any chunks, with aliases, logs, profiles,
// commands, pauses and an end in the middle. Every frame that comes out is held against a reference reader,
// the literal replacer and a plain count of the numbers; and another pair, which has only to be left alone,
// must still work.
//
// Input: the features to switch on, then steps: what is done, a size, and the bytes that are sent if any.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "app/services/modRegistry.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeFiles.h"
#include "tests/fuzz/Check.h"
#include "tests/fuzz/Input.h"
#include "tests/fuzz/ReferenceReader.h"
#include "tests/unit/LiteralReplacer.h"
#include "tests/unit/Rig.h"

namespace {

constexpr std::size_t kMaxFilling = 70'000;  // bytes in one run: a largest frame and what is around it
constexpr std::uint8_t kAliases = 1, kLogs = 2, kProfiles = 4;

const std::vector<Replacement> kPairs = {{"asdf1234", "Fred"}, {"Fred", "x"}, {"bo", "a longer alias"}};
constexpr char kAliasFile[] = "asdf1234\r\nFred\r\nFred\r\nx\r\nbo\r\na longer alias\r\n";

// What one side sends, as the other has to see it.
class Stream {
 public:
    Stream(os::fake::Peer& source, os::fake::Peer& sink, Direction direction, std::uint8_t features,
           std::size_t next)
        : source_(source), sink_(sink), direction_(direction), features_(features), next_(next) {}

    void Send(const std::string& bytes) {
        reader_.Feed(bytes);
        source_.Feed(bytes);
        CheckArrived();
    }
    void Silence() {
        reader_.Silence();
        CheckArrived();
    }
    void Close(bool isReset) {
        reader_.End();
        isReset ? source_.Reset() : source_.Close();
        TakeAgain();
    }
    // The other side takes nothing for now: what is sent to it waits, however long, and arrives later.
    void Stall() {
        isStalled_ = true;
        sink_.LimitReceived(0);
    }
    void TakeAgain() {
        isStalled_ = false;
        sink_.LimitReceived(SIZE_MAX);
        net::ProcessPendingEvents();
        CheckArrived();
    }
    // A frame of the program's own stands there, on channel 2 and with the next number.
    void CheckInjected() {
        const auto seen = sink_.TakeReceived();
        Check(seen.size() > 6 && seen[1] == 2 && seen.size() == 6 + WordAt(seen, 4),
              "an injected frame is whole");
        Check(WordAt(seen, 2) == TakeNumber(), "an injected frame has the next number");
    }

 private:
    void CheckArrived() {
        if (isStalled_) return;
        const auto received = sink_.TakeReceived();
        std::string_view seen = received;
        for (const auto& frame : std::exchange(reader_.frames, {})) {
            Check(seen.size() >= 6 && seen.size() >= 6 + WordAt(seen, 4), "a whole frame arrives");
            const auto length = 6 + WordAt(seen, 4);
            // A profile with its source is a frame of our own: it leaves on channel 2.
            const bool mayMove =
                (features_ & kProfiles) != 0 && frame.substr(6, 4) == ByteString("\0\2\0\6", 4);
            Check(seen[0] == '*' && (seen[1] == frame[1] || (mayMove && seen[1] == 2)), "marker and channel");
            Check(WordAt(seen, 2) == TakeNumber(), "the number is the next one");
            CheckPayload(seen.substr(6, length - 6), frame.substr(6));
            seen.remove_prefix(length);
        }
        Check(seen.empty(), "nothing else arrives");
    }

    void CheckPayload(std::string_view seen, const std::string& sent) const {
        const auto expected =
            (features_ & kAliases) != 0 ? RewriteLiterally(kPairs, direction_, sent) : ByteString(sent);
        const bool isUserInformation =
            expected.size() >= 10 && expected.starts_with(ByteString("\0\2\0\6", 4));
        if (isUserInformation && (features_ & kProfiles) != 0) {
            Check(seen.substr(0, 10) == expected.substr(0, 10), "a profile keeps its SNAC header");
        } else if (seen.find("127.0.0.1") == std::string_view::npos || sent.find(':') == std::string::npos) {
            // Elsewhere a server's address of IPv6 may have been replaced by one that the client can ask for.
            Check(seen == expected, "the payload");
        }
    }

    std::size_t TakeNumber() { return std::exchange(next_, (next_ + 1) & 0xFFFF); }

    os::fake::Peer& source_;
    os::fake::Peer& sink_;
    Direction direction_;
    std::uint8_t features_;
    std::size_t next_;
    ReferenceReader reader_;
    bool isStalled_ = false;
};

void SwitchOn(std::uint8_t features) {
    if ((features & kAliases) != 0) os::fake::PutFile("/program\\repl.dat", kAliasFile);
    modRegistry::WriteSetting("logwhere", "/logs");
    modRegistry::WriteSetting("logims", (features & kLogs) != 0 ? "1" : "0");
    modRegistry::WriteSetting("logfolder", "1");
    modRegistry::WriteSetting("seehtml", (features & kProfiles) != 0 ? "1" : "0");
}

// Slot 0 is the one under attack; so a command for nobody goes there.
void Attack(Input input, Stream& toServer, Stream& toClient) {
    std::size_t fillable = kMaxFilling;
    while (!input.IsEmpty()) {
        const auto step = input.Byte();
        auto& stream = step % 2 == 0 ? toServer : toClient;
        const std::size_t size = input.Byte();
        switch (step / 2 % 8) {
            case 4:
                size % 2 == 0 ? stream.Stall() : stream.TakeAgain();
                break;
            case 0:
                toServer.TakeAgain();
                modSocket::SetAwayMessage("nobody at all", std::string(size, 'z'));
                toServer.CheckInjected();
                break;
            case 1:
                os::fake::AdvanceClock(2000);
                toServer.Silence();
                toClient.Silence();
                break;
            case 2:
                stream.Send(std::string(std::min(size * 257, fillable), static_cast<char>(input.Byte())));
                fillable -= std::min(size * 257, fillable);
                break;
            case 3:
                if (size < 2) return stream.Close(size == 1);
                [[fallthrough]];
            default:
                stream.Send(input.Bytes(size));
        }
    }
    toClient.TakeAgain();
    toServer.Close(false);
}

void Run(const std::uint8_t* bytes, std::size_t size) {
    Rig rig;
    Input input(bytes, size);
    const auto features = input.Byte();
    SwitchOn(features);

    const auto pair = rig.ConnectTalking();
    const auto bystander = rig.ConnectTalking();
    Stream toServer(pair.client, pair.server, Direction::ToServer, features, 2);
    Stream toClient(pair.server, pair.client, Direction::ToClient, features, 101);
    Attack(std::move(input), toServer, toClient);

    Stream(bystander.client, bystander.server, Direction::ToServer, features, 2)
        .Send(Frame(2, 2, "still there"));
    Stream(bystander.server, bystander.client, Direction::ToClient, features, 101)
        .Send(Frame(2, 101, "so am I"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Run(bytes, size);
    os::fake::ResetWorld();  // what a run leaves would be taken for a leak, and the run be repeated
    return 0;
}
