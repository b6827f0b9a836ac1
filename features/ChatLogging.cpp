#include "features/ChatLogging.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "app/services/Settings.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "core/wire/Ucs2.h"
#include "features/Overview.h"
#include "features/SignedOnNames.h"
#include "features/SnacBytes.h"
#include "os/CodePage.h"

namespace {

constexpr std::uint16_t kChat = 0x000E;  // the family
constexpr std::uint16_t kRoom = 0x0002;
constexpr std::uint16_t kOutgoing = 0x0005;
constexpr std::uint16_t kIncoming = 0x0006;

// TLVs of a message, and of what it says.
constexpr std::uint16_t kSender = 0x0003;
constexpr std::uint16_t kInformation = 0x0005;
constexpr std::uint16_t kSendItBack = 0x0006;
constexpr std::uint16_t kText = 0x0001;
constexpr std::uint16_t kCharacterSet = 0x0002;

// A room: exchange (2), cookie behind its length byte, instance (2), level of detail (1), count of TLVs (2),
// these. Without a name the end of the cookie tells it ("!aol://2719:10-4-Poets").
std::string RoomName(std::string_view data) {
    constexpr std::uint16_t kName = 0x00D3;
    TakeWord(data);
    const auto cookie = TakeBytes(data, TakeByte(data));
    TakeBytes(data, 2 + 1 + 2);
    const auto name = FindTlv(data, kName).value_or(cookie.substr(cookie.rfind('-') + 1));
    return os::TextFromBytes(std::string(name));
}

std::string SaidIn(std::string_view information) {
    auto text = FindTlv(information, kText).value_or("");
    const auto characters = FindTlv(information, kCharacterSet).value_or("");
    if (SameWithoutCase(characters, "unicode-2-0")) return wire::TextFromUcs2(text);
    if (!SameWithoutCase(characters, "utf-8")) return os::TextFromBytes(std::string(text));
    std::string ucs2;
    while (!text.empty()) AppendUcs2(ucs2, TakeUtf8(text).value_or(U'?'));
    return wire::TextFromUcs2(ucs2);
}

class ChatLogger;

// Who logs a room: of several users in it, the one whose connection was there first.
using Rooms = std::map<std::string, const ChatLogger*>;

class ChatLogger final : public SessionFeature {
 public:
    ChatLogger(Session& session, std::shared_ptr<modLogging::MessageLog> log, std::shared_ptr<Rooms> rooms)
        : session_(session), log_(std::move(log)), rooms_(std::move(rooms)) {}
    ~ChatLogger() override { Leave(); }

    Verdict Frame(FrameView& frame) override {
        const bool outgoing = frame.Way() == Direction::ToServer;
        const auto data = SnacDataOf(outgoing ? frame.Original() : frame.Payload());
        if (SnacKindOf(frame.Payload()) == SnacKind(kChat, kRoom))
            Enter(RoomName(data));
        else if (settings::IsOn("logims") && settings::IsOn("logchat") && LogsRoom())
            Log(data, outgoing);
        return Verdict::Pass;
    }

 private:
    void Enter(std::string room) {
        Leave();
        room_ = std::move(room);
        place_ = TextOf(session_.Asked()) + " " + room_;
    }
    void Leave() {
        const auto room = rooms_->find(place_);
        if (room != rooms_->end() && room->second == this) rooms_->erase(room);
    }
    // When the first one leaves, the next one to hear something goes on.
    bool LogsRoom() { return place_.empty() || rooms_->try_emplace(place_, this).first->second == this; }

    // Cookie (8) and channel (2), then TLVs. What the server is asked to send back is logged when it comes.
    void Log(std::string_view data, bool outgoing) {
        TakeBytes(data, 8 + 2);
        const auto information = FindTlv(data, kInformation);
        if (!information || (outgoing && FindTlv(data, kSendItBack))) return;
        const auto speaker = outgoing ? OwnName() : Sender(data);
        log_->Write({room_, speaker, SaidIn(*information), outgoing || IsOwn(speaker)});
    }

    static std::string Sender(std::string_view data) {
        auto user = FindTlv(data, kSender).value_or("");
        return user.empty() ? std::string() : std::string(TakeUser(user));
    }

    // Servers do not tell the name on the connection of a room; the cookie that the client came with does.
    std::string OwnName() const {
        const auto& name = session_.Names(Direction::ToServer).name;
        if (!name.empty()) return name;
        const auto* const overview = Overview::Current();
        const auto* const leg = overview != nullptr ? overview->connections.Find(session_.Slot()) : nullptr;
        if (leg != nullptr && !leg->name.empty()) return leg->name;
        const auto names = SignedOnNames();
        return names.empty() ? std::string() : names.front();
    }
    static bool IsOwn(const std::string& speaker) {
        const auto names = SignedOnNames();
        const auto same = [name = NormalizeScreenName(speaker)](const auto& own) {
            return NormalizeScreenName(own) == name;
        };
        return std::any_of(names.begin(), names.end(), same);
    }

    Session& session_;
    const std::shared_ptr<modLogging::MessageLog> log_;
    const std::shared_ptr<Rooms> rooms_;
    std::string room_ = "chat";
    std::string place_;  // the server's and the room's name; "" before the server has told it
};

}  // namespace

FeatureEntry ChatLogging(std::shared_ptr<modLogging::MessageLog> log) {
    return {{{kChat, kRoom, Direction::ToClient},
             {kChat, kOutgoing, Direction::ToServer},
             {kChat, kIncoming, Direction::ToClient}},
            [log = std::move(log), rooms = std::make_shared<Rooms>()](Session& session) {
                return std::make_unique<ChatLogger>(session, log, rooms);
            }};
}
