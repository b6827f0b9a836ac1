// The command line of oscarload.
#pragma once

#include <netinet/in.h>
#include <sys/types.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace bench {

enum class Route { Direct, Socks4, Socks5 };

struct Options {
    Route route = Route::Socks4;
    bool hasProxy = false;
    sockaddr_in proxy{};
    std::uint16_t listenPort = 0;
    bool signon = true;
    std::vector<pid_t> proxyPids;
    double seconds = 1.5;           // how long one throughput or latency run may last
    std::uint64_t streamMb = 1024;  // most MB per throughput run
    std::uint64_t floodMb = 512;    // MB sent against a receiver that does not read
    std::size_t payload = 0;        // of every frame of a stream, in bytes; 0: a mix
    bool text = false;  // printable bytes in the frames of a stream, as messages and profiles hold
    int churn = 20000;
    double churnSeconds = 30;
    std::vector<int> idle{1, 100, 1000, 4000};
    std::string jsonPath;
    std::string label;
    std::set<std::string> scenarios;
};

extern Options options;

// Reads the command line into `options`; throws on values that make no sense, ends the program on an unknown
// word.
void ParseOptions(int argc, char** argv);

}  // namespace bench
