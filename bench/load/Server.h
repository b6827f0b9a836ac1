// Server: the far end of all connections, a thread of its own. A command frame tells it what to do on a
// connection.
#pragma once

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "bench/load/Stream.h"

namespace bench {

enum Mode : std::uint64_t { kEcho = 0, kSink = 1, kSource = 2, kBoth = 3, kSinkHeld = 4 };

class Server {
 public:
    std::uint16_t port = 0;
    std::atomic<int> openConnections{0};
    std::atomic<std::uint64_t> bytesSent{0};  // progress of the source in the newest connection
    std::atomic<bool> releaseHeld{false};     // lets the sinks that hold back read on

    void Start();
    void Stop();

    std::vector<std::string> TakeErrors();

 private:
    struct Peer;

    void Watch(int op, int fd, std::uint32_t events, void* tag);
    void Run();
    void AcceptSome();
    void Serve(Peer* p, std::uint32_t events);
    void HandleFrame(Peer* p, const Frame& f);
    void Update(Peer* p);
    void Drop(Peer* p);

    int listenFd_ = -1, epoll_ = -1;
    std::thread thread_;
    std::atomic<bool> quit_{false};
    std::mutex mutex_;
    std::vector<std::string> errors_;
    std::set<Peer*> peers_;
};

extern Server server;

// Lets the connections of the last scenario end.
void WaitUntilServerIsIdle();

}  // namespace bench
