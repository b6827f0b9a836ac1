#include "bench/load/Client.h"
#include "bench/load/Options.h"
#include "bench/load/ProxyUse.h"
#include "bench/load/Results.h"
#include "bench/load/Scenarios.h"

namespace bench {

void Throughput(const std::string& name, Mode mode) {
    bool up = mode == kSink || mode == kBoth, down = mode == kSource || mode == kBoth;
    std::uint64_t budget = options.streamMb * 1000000;
    StreamPtr s = OpenConnection();
    bool endSeen = false, ackSeen = false;
    std::uint64_t upFrames = 0, upBytes = 0;

    CpuMeter cpu;
    double start = Now();
    std::uint64_t baseFrames = s->rxFrames, baseBytes = s->rxBytes;
    Command(*s, mode, budget, std::uint64_t(options.seconds * 1000));
    if (up) {
        s->sourceBudget = budget;
        s->sourceUntil = start + options.seconds;
        s->source = true;
    }
    Pump(
        *s, options.seconds + 30, [&] { return (!up || ackSeen) && (!down || endSeen); },
        [&](const Frame& f) {
            if (f.subtype == kAck) {
                ackSeen = true;
                upFrames = Load64(f.Body());
                upBytes = Load64(f.Body() + 8);
            } else if (f.subtype == kEnd) {
                endSeen = true;
                if (Load64(f.Body()) + 1 != s->rxFrames) Fail("frames missing before the end frame");
            }
        });
    double elapsed = Now() - start;
    double frames = double(upFrames + s->rxFrames - baseFrames);
    double mb = double(upBytes + s->rxBytes - baseBytes) / 1e6;
    Report(name + ".MB_s", mb / elapsed, "MB/s");
    Report(name + ".frames_s", frames / elapsed, "frames/s");
    if (!options.proxyPids.empty()) {
        double used = cpu.Used();
        Report(name + ".cpu_ms_per_MB", used * 1e3 / mb, "ms");
        Report(name + ".cpu_s_per_1e6_frames", used * 1e6 / frames, "s");
    }
}

}  // namespace bench
