#include <exception>

#include "bench/load/Client.h"
#include "bench/load/Options.h"
#include "bench/load/ProxyUse.h"
#include "bench/load/Results.h"
#include "bench/load/Scenarios.h"

namespace bench {

void Scale() {
    OpenPingClose();
    double before = ProxyMemoryKb();
    std::vector<StreamPtr> idle;
    double deadline = Now() + 40;
    try {
        for (int n : options.idle) {
            while (int(idle.size()) < n) {
                if (Now() > deadline) Fail("time-out while opening connections");
                idle.push_back(OpenConnection(false));
            }
            for (auto& s : idle)
                if (options.signon) AwaitFrames(*s, 1);
            std::string name = "scale.idle" + std::to_string(n);
            if (!options.proxyPids.empty() && n > 1)
                Report(name + ".kB_per_conn", (ProxyMemoryKb() - before) / n, "kB");
            MeasurePings(name, 4000, options.seconds / 2);
        }
    } catch (const std::exception& e) {
        Fail(std::string(e.what()) + " (with " + std::to_string(idle.size()) + " idle connections)");
    }
    // Nothing may have been lost on the quiet connections meanwhile.
    for (std::size_t i = 0; i < idle.size(); i += 37) Ping(*idle[i]);
}

void Churn() {
    double warmUntil = Now() + 5;
    for (int i = 0; i < 500 && Now() < warmUntil; ++i) OpenPingClose();
    WaitUntilServerIsIdle();
    double before = ProxyMemoryKb();
    double start = Now();
    int done = 0;
    CpuMeter cpu;
    while (done < options.churn && Now() - start < options.churnSeconds) {
        OpenPingClose();
        ++done;
    }
    double elapsed = Now() - start;
    Report("churn.connections", done, "conns");
    Report("churn.conns_s", done / elapsed, "conns/s");
    if (options.proxyPids.empty()) return;
    Report("churn.cpu_us_per_conn", cpu.Used() * 1e6 / done, "us");
    WaitUntilServerIsIdle();
    Report("churn.kB_before", before, "kB");
    Report("churn.kB_after", ProxyMemoryKb(), "kB");
    Report("churn.bytes_kept_per_conn", (ProxyMemoryKb() - before) * 1024 / done, "B");
}

}  // namespace bench
