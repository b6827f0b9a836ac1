// Leg: one connection that the client has asked for, as people are told of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/Route.h"
#include "core/SessionFeature.h"
#include "os/Clock.h"

struct Leg {
    enum class State : std::uint8_t { Connecting, Connected, Ended };
    enum class Purpose : std::uint8_t { Unknown, Authorisation, Bos, Chat, Icons, Other };

    // A place that was tried in vain.
    struct Attempt {
        Place place;
        ConnectFailure failure;
        std::int32_t errorNumber;  // the system's
    };
    // Why the server has ended the session: the first such thing that it said.
    struct Goodbye {
        std::uint16_t code;  // TLV 9 of the closing frame; 1: signed on elsewhere; 0: none
    };
    enum class Rates : std::uint8_t { Fine, Warned, Limited };

    std::size_t slot = 0;              // of the relay's table; unique while the program runs
    const Session* session = nullptr;  // while it is open
    std::int64_t began = 0;            // when the client asked: os::SecondsSince1970
    std::int64_t beganMs = 0;          // os::MonotonicMilliseconds
    std::string name;                  // the user's screen name; "" before it is known
    Purpose purpose = Purpose::Unknown;
    std::vector<std::uint16_t> families;  // that the server offers
    Place asked;
    bool isSent = false;                  // the server had sent the client there
    std::vector<Attempt> failed;          // places tried in vain, oldest first
    Place trying;                         // the place tried last, which is the one reached if one was
    std::optional<Place> sentTo;          // where the server has sent the client last, by this leg
    std::optional<os::Endpoint> reached;  // once the connection stands
    State state = State::Connecting;
    TrafficCount fromClient, fromServer;
    bool isSignedOn = false;                  // the server has named the user
    std::optional<std::uint16_t> loginError;  // SNAC(17,03), TLV 8
    std::optional<Goodbye> goodbye;
    Rates rates = Rates::Fine;           // of the user's sending, as the server has said last
    EndedBy endedBy = EndedBy::Wrenlow;  // once ended
    std::int32_t errorNumber = 0;        // with which it ended; 0: none
};

// The texts of the columns. When: "2026-11-22 13:05:09". What for: "authorisation", "BOS", "chat", "icons",
// "service 0D chat rooms", "" while it is not known. Reached: "93.184.216.34:5190", "" until then. State:
// "connecting", "connected", "ended". How it ended: "ended by the client", "no answer from 10.9.9.9:5190",
// ...; "" before.
std::string WhenText(std::int64_t seconds);
std::string PurposeText(const Leg& leg);
std::string ReachedText(const Leg& leg);
std::string StateText(const Leg& leg);
std::string EndText(const Leg& leg);
