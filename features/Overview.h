// Overview: what people can be told about the relay: its connections, what became of the last sign-on, and
// what passes. A program makes one beside its relay; without one the features in the sessions are not made.
#pragma once

#include "core/Relay.h"
#include "features/connections/Connections.h"
#include "features/connections/ServerRouter.h"
#include "features/connections/SignOnVerdict.h"
#include "features/traffic/Traffic.h"

class Overview {
 public:
    // The newest is the current one. The relay must outlive it.
    explicit Overview(Relay& relay);
    ~Overview();
    Overview(const Overview&) = delete;
    Overview& operator=(const Overview&) = delete;

    // nullptr when there is none.
    static Overview* Current();

    Connections connections;
    Traffic traffic;
    ClientFacts client;  // the front door sets it
    ServerRouter router;

    SignOnVerdict Verdict() const { return JudgeSignOn(connections.Legs(), client); }

 private:
    Relay& relay_;
    Overview* const before_;
};
