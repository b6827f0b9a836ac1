// SessionFeature: what the relay and its session features know of each other. A feature is a filter: it says
// which frames it wants, gets an object for each connection, and may look at a frame, replace its payload,
// drop it, hold it back and send frames of its own either way.
//
// Each call has its own trap: a feature that throws is reported once, and the frame goes on as it was before
// that step. Frames that a feature sends itself are not shown to the features.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/Route.h"
#include "core/clsHeaderSNAC.h"
#include "os/Sockets.h"

enum class Direction : std::uint8_t { ToServer, ToClient };

enum class Verdict : std::uint8_t { Pass, Drop };

inline constexpr std::uint16_t kAny = 0xFFFF;
// As a family: the frames of every channel but that of the SNACs, whatever their payload begins with.
inline constexpr std::uint16_t kOtherChannels = 0xFFFE;

// The frames that a feature wants. Without a direction: both. A family above 255 has never been seen; to want
// one is refused. The channel is not looked at; a payload too short for a SNAC header is no SNAC and wanted
// only by those who want every frame.
struct Interest {
    std::uint16_t family = kAny;
    std::uint16_t subtype = kAny;
    std::optional<Direction> direction = {};
};

// What has come from one side.
struct TrafficCount {
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;
};

// Why a place could not be reached: its name is unknown, it refuses, or nothing answers.
enum class ConnectFailure : std::uint8_t { NameUnknown, Refused, NoAnswer };

enum class EndedBy : std::uint8_t { Client, Server, Wrenlow };

// How a connection has ended; the system's error number when it failed or was reset, else 0.
struct SessionEnd {
    EndedBy by;
    std::int32_t errorNumber;
};

// The user's screen name as the client knows it, and as it stood in the frame before any alias.
struct ScreenNames {
    std::string name;
    std::string original;
};

// A frame on its way through the features. Views are valid during the call.
class FrameView {
 public:
    FrameView(Direction direction, std::uint8_t channel, std::string_view payload)
        : direction_(direction), channel_(channel), original_(payload), payload_(payload) {}
    FrameView(const FrameView&) = delete;
    FrameView& operator=(const FrameView&) = delete;

    Direction Way() const { return direction_; }
    std::uint8_t Channel() const { return channel_; }
    // As it arrived, and as the features before this one have left it.
    std::string_view Original() const { return original_; }
    std::string_view Payload() const { return payload_; }
    clsHeaderSNAC Snac() const;

    // Puts another payload in its place; counts when the call returns without an exception. Throws
    // RuntimeError (Overflow) for one that no frame can carry.
    void Replace(ByteString payload);

 private:
    friend class FeatureChain;
    friend class clsAIMSocket;

    bool IsReplaced() const { return replaced_.has_value(); }
    // Makes the replacement of the last step, if there is one, the payload; whether there was one.
    bool Settle();

    Direction direction_;
    std::uint8_t channel_;
    std::string_view original_;
    std::string_view payload_;
    std::optional<ByteString> replaced_;
    std::optional<ByteString> proposed_;
};

// A connection, as a feature sees it. Lives longer than the feature's object.
class Session {
 public:
    // In the relay's table; unique while the program runs.
    virtual std::size_t Slot() const = 0;
    // Where the client asked to be connected to.
    virtual const Place& Asked() const = 0;
    // What has come from the client (ToServer), or from the server (ToClient), and the ends of the connection
    // with it.
    virtual TrafficCount Received(Direction direction) const = 0;
    virtual os::Ends EndsOf(Direction direction) const = 0;
    // The host that the server was looked for at has addresses, and none of IPv4.
    virtual bool IsIPv6Only() const = 0;

    // What frames of that direction have told of the user. The client's sign-on request tells its own
    // direction; the word of the server (SNAC (1, 0x0F)) counts for both.
    virtual const ScreenNames& Names(Direction direction) const = 0;
    virtual void Learn(Direction direction, ScreenNames names, bool isServersWord) = 0;

    // Sends a frame, numbered in the sequence of that direction, behind all that has left and before the
    // frame that is being looked at. Throws RuntimeError, with the sequence untouched, when the connection is
    // closed, the payload is too long, or no frame has gone that way yet, so that no number is known.
    virtual void Send(Direction direction, ByteString payload, std::uint8_t channel = kSnacChannel) = 0;

    static constexpr std::uint8_t kSnacChannel = 2;

 protected:
    ~Session() = default;
};

// One feature at work on one connection. No call may end the connection.
class SessionFeature {
 public:
    virtual ~SessionFeature() = default;

    // A frame that the feature wants.
    virtual Verdict Frame(FrameView& /*frame*/) { return Verdict::Pass; }

    // A place is tried; it could not be reached, with the system's error number.
    virtual void Trying(const Place& /*place*/) {}
    virtual void Failed(const Place& /*place*/, ConnectFailure /*why*/, std::int32_t /*errorNumber*/) {}
    // The connection to the server stands; the server has named the user for the first time, and the client
    // has been told; the connection ends, whoever ended it.
    virtual void Connected() {}
    virtual void SignedOn() {}
    virtual void Ended(const SessionEnd& /*end*/) {}

    // The user's commands. What is thrown is the command's failure.
    virtual void SetAwayMessage(const std::string& /*strAway*/) {}
    virtual void SetIdle(std::int32_t /*mins*/) {}
    virtual void SetProfile(const std::string& /*strProfile*/) {}
};

// When the object for a connection is made.
enum class Made : std::uint8_t {
    WithFirstFrame,  // that it wants; it is told of nothing that was before. Many connections never have one.
    AtOnce,          // as soon as the client's request has been read
    OrRefused,       // the same, and without it there is no connection, because the user would be misled
};

// A feature as the list of features has it.
struct FeatureEntry {
    std::vector<Interest> interests;
    // Makes the object for a connection; nullptr: none for this one. What it throws is reported.
    std::function<std::unique_ptr<SessionFeature>(Session&)> make;
    Made made = Made::WithFirstFrame;
};

// The entry for a feature whose objects are made from the session alone.
template <typename Feature>
FeatureEntry FeatureOf(std::vector<Interest> interests, Made made = Made::WithFirstFrame) {
    return {std::move(interests), [](Session& session) { return std::make_unique<Feature>(session); }, made};
}
