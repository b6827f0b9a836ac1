#include <sys/epoll.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "bench/load/Client.h"
#include "bench/load/Options.h"
#include "bench/load/ProxyUse.h"
#include "bench/load/Results.h"
#include "bench/load/Scenarios.h"

namespace bench {

void MeasurePings(const std::string& name, int count, double seconds) {
    StreamPtr s = OpenConnection();
    for (int i = 0; i < 200; ++i) Ping(*s);
    std::vector<double> us;
    us.reserve(std::size_t(count));
    CpuMeter cpu;
    double until = Now() + seconds;
    for (int i = 0; i < count && Now() < until; ++i) {
        double t = Now();
        Ping(*s);
        us.push_back((Now() - t) * 1e6);
    }
    double used = cpu.Used();
    std::sort(us.begin(), us.end());
    Report(name + ".p50_us", Percentile(us, 0.50), "us");
    Report(name + ".p99_us", Percentile(us, 0.99), "us");
    Report(name + ".p999_us", Percentile(us, 0.999), "us");
    if (!options.proxyPids.empty() && name == "latency.alone")
        Report(name + ".cpu_s_per_1e6_frames", used * 1e6 / (2.0 * double(us.size())), "s");
}

// Users: `n` connections that together send so many frames a second and get them echoed.
class Chatter {
 public:
    Chatter(int n, int framesASecond) : framesASecond_(framesASecond) {
        epoll_ = ::epoll_create1(EPOLL_CLOEXEC);
        for (int i = 0; i < n; ++i) {
            streams_.push_back(OpenConnection());
            epoll_event e{};
            e.events = EPOLLIN;
            e.data.ptr = streams_.back().get();
            epoll_ctl(epoll_, EPOLL_CTL_ADD, streams_.back()->fd, &e);
        }
        thread_ = std::thread([this] { Run(); });
    }
    ~Chatter() {
        if (thread_.joinable()) Stop();
        ::close(epoll_);
    }
    void Stop() {
        quit_ = true;
        thread_.join();
        if (!error_.empty()) Fail("background connections: " + error_);
    }
    // How many have come back, once it has stopped.
    std::uint64_t Echoed() const {
        std::uint64_t frames = 0;
        for (const auto& stream : streams_) frames += stream->rxFrames;
        return frames;
    }

 private:
    const int framesASecond_;
    int epoll_;
    std::vector<StreamPtr> streams_;
    std::thread thread_;
    std::atomic<bool> quit_{false};
    std::string error_;

    void Run() try {
        std::size_t next = 0;
        double due = Now();
        epoll_event events[64];
        while (!quit_) {
            int n = ::epoll_wait(epoll_, events, 64, 1);
            for (int i = 0; i < n; ++i) {
                auto* s = static_cast<Stream*>(events[i].data.ptr);
                s->Receive(MSG_DONTWAIT, [](const Frame&) {});
                if (s->peerClosed) Fail("closed by the proxy");
            }
            if (Now() - due > 1) due = Now();  // never more than a second of arrears
            for (; due < Now(); due += 1.0 / framesASecond_) {
                Stream& s = *streams_[next++ % streams_.size()];
                s.Queue(FrameMix()[next % FrameMix().size()]);
                if (!s.Flush(MSG_DONTWAIT)) Fail("connection lost");
            }
        }
    } catch (const std::exception& e) {
        error_ = e.what();
    }
};

void LatencyAlone() {
    MeasurePings("latency.alone", 20000, options.seconds);
}

void LatencyBusy() {
    Chatter others(100, 5000);
    MeasurePings("latency.busy", 20000, options.seconds);
    others.Stop();
}

void Pace(int framesASecond) {
    Chatter users(10, framesASecond / 2);
    CpuMeter cpu;
    std::this_thread::sleep_for(std::chrono::duration<double>(options.seconds));
    const double used = cpu.Used();
    users.Stop();
    const auto frames = 2.0 * double(users.Echoed());
    const auto name = "pace." + std::to_string(framesASecond);
    Report(name + ".frames_s", frames / options.seconds, "frames/s");
    if (!options.proxyPids.empty()) Report(name + ".cpu_percent", used * 100 / options.seconds, "%");
}

}  // namespace bench
