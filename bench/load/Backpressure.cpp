#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

#include "bench/load/Client.h"
#include "bench/load/Options.h"
#include "bench/load/ProxyUse.h"
#include "bench/load/Results.h"
#include "bench/load/Scenarios.h"

namespace bench {

namespace {

// Samples the proxy's resident memory in the background.
class PeakSampler {
 public:
    PeakSampler() : pids_(ProxyProcesses()), first_(ResidentKb(pids_)) {
        thread_ = std::thread([this] {
            while (!quit_) {
                peak_ = std::max(peak_, ResidentKb(pids_));
                PauseMs(10);
            }
        });
    }
    double Stop() {
        quit_ = true;
        thread_.join();
        return peak_;
    }
    ~PeakSampler() {
        if (thread_.joinable()) Stop();
    }
    double first() const { return first_; }

 private:
    std::set<pid_t> pids_;
    double first_, peak_ = 0;
    std::atomic<bool> quit_{false};
    std::thread thread_;
};

// Lets the sender run until it has not moved for 0.7 s (or 10 s have gone).
void WaitForStall(const std::function<std::uint64_t()>& progress) {
    std::uint64_t last = progress();
    double moved = Now(), start = moved;
    while (Now() - moved < 0.7 && Now() - start < 10) {
        PauseMs(20);
        std::uint64_t p = progress();
        if (p != last) {
            last = p;
            moved = Now();
        }
    }
}

void FinishBackpressure(const std::string& name, PeakSampler& sampler, std::uint64_t taken) {
    double peak = sampler.Stop();
    Report(name + ".MB_taken_while_stalled", double(taken) / 1e6, "MB");
    if (options.proxyPids.empty()) return;
    Report(name + ".peak_rss_MB", peak / 1024, "MB");
    Report(name + ".peak_growth_MB", (peak - sampler.first()) / 1024, "MB");
}

}  // namespace

void BackpressureDown() {  // the client stops reading
    StreamPtr s = OpenConnection();
    PeakSampler sampler;
    bool endSeen = false;
    server.bytesSent = 0;
    Command(*s, kSource, options.floodMb * 1000000, 60000);
    WaitForStall([] { return server.bytesSent.load(); });
    std::uint64_t taken = server.bytesSent;
    Pump(
        *s, 60, [&] { return endSeen; },
        [&](const Frame& f) {
            if (f.subtype != kEnd) return;
            endSeen = true;
            if (Load64(f.Body()) + 1 != s->rxFrames) Fail("frames missing before the end frame");
        });
    FinishBackpressure("backpressure.down", sampler, taken);
}

void BackpressureUp() {  // the server stops reading
    StreamPtr s = OpenConnection();
    PeakSampler sampler;
    bool ackSeen = false;
    Command(*s, kSinkHeld);
    s->sourceBudget = options.floodMb * 1000000;
    s->sourceUntil = Now() + 60;
    s->source = true;
    std::atomic<std::uint64_t> sent{0};
    std::uint64_t taken = 0;
    std::thread releaser([&] {
        WaitForStall([&] { return sent.load(); });
        taken = sent;
        server.releaseHeld = true;
    });
    std::string error;
    try {
        Pump(
            *s, 75,
            [&] {
                sent = s->txBytes;
                return ackSeen;
            },
            [&](const Frame& f) { ackSeen |= f.subtype == kAck; });
    } catch (const std::exception& e) {
        error = e.what();
    }
    releaser.join();
    if (!error.empty()) Fail(error);
    FinishBackpressure("backpressure.up", sampler, taken);
}

}  // namespace bench
