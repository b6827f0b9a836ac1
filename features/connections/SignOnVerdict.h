// SignOnVerdict: what became of the last sign-on, in one or two sentences.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "features/connections/Leg.h"

// What the windows know of the AIM client; nothing natively.
struct ClientFacts {
    bool isKnown = false;  // whether the rest says anything
    bool runs = false;
    bool isSetUp = false;  // to use Wrenlow as its proxy
};

enum class SignOnState : std::uint8_t {
    NoClient,  // nobody has connected yet, and nothing is known of a client
    ClientNotRunning,
    ClientNotSetUp,
    ClientIdle,  // it runs and is set up, and has not connected
    SigningOn,
    SignedOn,
    Refused,  // by the server, with a number
    NameUnknown,
    ConnectionRefused,
    NoAnswer,
    SentAstray,  // the server sent the client to an address that cannot be reached from here
    SignedOnElsewhere,
    Slowed,  // by the rate limit
    CutByRateLimit,
    EndedByServer,  // before the sign-on was done, without a reason
    EndedByClient,
    SignedOff,  // was signed on, and the session has ended
};

struct SignOnVerdict {
    SignOnState state = SignOnState::NoClient;
    std::string text;         // one or two sentences
    const char* anchor = "";  // the section of the manual's page "why" (why.html#anchor)
    bool isTrouble = false;

    // What the icon's tip says behind "Wrenlow - "; "" when there is no trouble: "server unreachable".
    const char* tip = "";
};

SignOnVerdict JudgeSignOn(const std::deque<Leg>& legs, const ClientFacts& client);

// What a login error of SNAC(17,03), TLV 8, means, as a sentence; never "".
std::string LoginErrorText(std::uint16_t number);
