// oscarload: drives an OSCAR (FLAP) relay with verified traffic and measures it.
//
// One process holds both ends: a server thread that speaks FLAP on loopback, and client code that reaches
// that server through the proxy under test. Every frame is checked where it arrives, so a relay that loses,
// reorders or damages frames fails the scenario instead of getting a good figure.
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <exception>

#include "bench/load/Frames.h"
#include "bench/load/Options.h"
#include "bench/load/Results.h"
#include "bench/load/Scenarios.h"
#include "bench/load/Server.h"

namespace {

using namespace bench;

struct Scenario {
    const char* group;
    const char* name;
    void (*run)();
};

const Scenario kScenarios[] = {
    {"throughput", "throughput.c2s", [] { Throughput("throughput.c2s", kSink); }},
    {"throughput", "throughput.s2c", [] { Throughput("throughput.s2c", kSource); }},
    {"throughput", "throughput.both", [] { Throughput("throughput.both", kBoth); }},
    {"latency", "latency.alone", LatencyAlone},
    {"latency", "latency.busy", LatencyBusy},
    {"pace", "pace.100", [] { Pace(100); }},
    {"pace", "pace.1000", [] { Pace(1000); }},
    {"pace", "pace.5000", [] { Pace(5000); }},
    {"rate", "rate.sequential", RateSequential},
    {"rate", "rate.concurrent64", RateConcurrent},
    {"scale", "scale", Scale},
    {"churn", "churn", Churn},
    {"backpressure", "backpressure.down", BackpressureDown},
    {"backpressure", "backpressure.up", BackpressureUp},
    {"split", "split", Split},
};

}  // namespace

int main(int argc, char** argv) {
    try {
        ParseOptions(argc, argv);
        signal(SIGPIPE, SIG_IGN);
        rlimit files{};
        getrlimit(RLIMIT_NOFILE, &files);
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
        FrameMix();
        server.Start();
    } catch (const std::exception& e) {
        fprintf(stderr, "oscarload: %s\n", e.what());
        return 2;
    }
    printf("oscarload %s\n", options.label.c_str());
    for (const Scenario& s : kScenarios)
        if (options.scenarios.empty() || options.scenarios.count(s.group)) Guarded(s.name, s.run);
    server.Stop();
    if (!options.jsonPath.empty()) WriteJson();
    const auto failures = CountFailures();
    printf("%zu failures\n", failures);
    return failures == 0 ? 0 : 1;
}
