// Capture: what passes, written to a file or to standard output as it passes (--pcapng).
#pragma once

#include <string>

#include "features/traffic/PcapngWriter.h"
#include "net/EventLoop.h"
#include "os/Path.h"

class Capture {
 public:
    // To the file, in place of what it held, or to standard output where that is "-". Throws RuntimeError
    // when the file cannot be written.
    explicit Capture(const std::string& file);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    void Take(const TrafficLeg& leg, const TrafficFrame& frame);

 private:
    void flushing_Tick();
    void Write();

    const os::Path file_;  // empty for standard output
    PcapngWriter writer_;
    std::string gathered_;  // what is not in the file yet
    net::Timer flushing_;
    bool hasFailed_ = false;
};
