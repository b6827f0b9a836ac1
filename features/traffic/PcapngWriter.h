// PcapngWriter: frames as a capture file: each connection twice, as the client and as the server saw it.
#pragma once

#include <map>
#include <string>

#include "features/traffic/Pcapng.h"
#include "features/traffic/Traffic.h"

class PcapngWriter {
 public:
    // Passwords, hashes and cookies are blotted out with "*" unless the user wants them.
    explicit PcapngWriter(bool showSecrets = false) : showSecrets_(showSecrets) {}

    // What a file begins with, and the bytes to append for a frame.
    static std::string Head();
    std::string Append(const TrafficLeg& leg, const TrafficFrame& frame);

 private:
    struct Streams {
        pcapng::Stream client, server;
    };

    bool showSecrets_;
    std::map<std::size_t, Streams> streams_;
};

// All that is kept, as a file's bytes.
std::string PcapngOf(const Traffic& traffic, bool showSecrets = false);
