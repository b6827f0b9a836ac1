// What the proxy under test uses of CPU and memory, all its processes and their descendants together.
#pragma once

#include <sys/types.h>

#include <set>

namespace bench {

std::set<pid_t> ProxyProcesses();

// User and system time, ended and reaped children included. The resolution is a clock tick, 10 ms.
double ProxyCpuSeconds();
// Proportional set size: shared pages count once.
double ProxyMemoryKb();
// Resident size, which is cheap enough for sampling a peak.
double ResidentKb(const std::set<pid_t>& pids);

class CpuMeter {
 public:
    CpuMeter() : begin_(ProxyCpuSeconds()) {}
    double Used() const { return ProxyCpuSeconds() - begin_; }

 private:
    double begin_;
};

}  // namespace bench
