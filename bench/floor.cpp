// oscarfloor: what a single-threaded frame relay must pay on this machine at least: the work per frame in
// memory and the system calls per chunk. Prints the figures and, last, the floor computed from them: one
// read, every frame numbered in place, one send, per 64 KiB.
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kFloorChunk = 64 * 1024;

double Now() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// Seconds of the fastest of some runs: the others were disturbed.
template <typename Body>
double BestOf(int runs, Body body) {
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        const double start = Now();
        body();
        best = std::min(best, Now() - start);
    }
    return best;
}

// The traffic mix of oscarload as one run of whole frames; 6 bytes of header, then the payload.
std::string MakeFrames(std::size_t bytes) {
    std::mt19937 random(1);
    std::string frames;
    while (frames.size() < bytes) {
        const std::size_t length = random() % 100 < 5 ? 2048 + random() % 6145 : 40 + random() % 261;
        const char header[6] = {0x2A, 2, 0, 0, static_cast<char>(length >> 8), static_cast<char>(length)};
        frames.append(header, sizeof header);
        frames.append(length, static_cast<char>(random()));
    }
    return frames;
}

// Looks at each frame as a dispatcher would and numbers it anew; returns how many there were.
std::size_t Renumber(std::string& frames, std::uint16_t& sequence, unsigned& hits) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < frames.size(); ++count) {
        char* const frame = &frames[at];
        const auto byte = [&](int i) { return static_cast<std::uint8_t>(frame[i]); };
        hits += byte(6) == 0 && byte(7) == 4;
        frame[2] = static_cast<char>(sequence >> 8);
        frame[3] = static_cast<char>(sequence);
        ++sequence;
        at += std::size_t{6} + static_cast<std::size_t>(byte(4) << 8 | byte(5));
    }
    return count;
}

double NanosecondsPerFrame(std::size_t bytes, int passes) {
    auto frames = MakeFrames(bytes);
    std::uint16_t sequence = 1;
    unsigned hits = 0;
    std::size_t count = 0;
    const double seconds = BestOf(5, [&] {
        count = 0;
        for (int i = 0; i < passes; ++i) count += Renumber(frames, sequence, hits);
    });
    if (hits == 0xFFFFFFFF) std::puts("");  // so that the work is not left out
    return seconds * 1e9 / static_cast<double>(count);
}

[[noreturn]] void Die(const char* what) {
    std::perror(what);
    std::exit(1);
}

struct Pair {
    int sender, receiver;
};

Pair LoopbackPair() {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener, generic, size) != 0 || ::listen(listener, 1) != 0) Die("listen");
    ::getsockname(listener, generic, &size);
    const int sender = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(sender, generic, size) != 0) Die("connect");
    const int receiver = ::accept(listener, nullptr, nullptr);
    ::close(listener);
    const int on = 1;
    ::setsockopt(sender, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return {sender, receiver};
}

// One send and the receiving of it, delivery on loopback included.
double MicrosecondsPerChunk(std::size_t chunk) {
    const auto [sender, receiver] = LoopbackPair();
    std::vector<char> data(chunk);
    const int rounds = chunk > 10000 ? 5000 : 30000;
    const double seconds = BestOf(3, [&] {
        for (int i = 0; i < rounds; ++i) {
            if (::send(sender, data.data(), chunk, 0) != static_cast<ssize_t>(chunk)) Die("send");
            for (std::size_t got = 0; got < chunk;) {
                const auto count = ::recv(receiver, data.data(), chunk - got, 0);
                if (count <= 0) Die("recv");
                got += static_cast<std::size_t>(count);
            }
        }
    });
    ::close(sender);
    ::close(receiver);
    return seconds * 1e6 / rounds;
}

void PrintReadiness() {
    const auto [sender, receiver] = LoopbackPair();
    const int epoll = ::epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN;
    ::epoll_ctl(epoll, EPOLL_CTL_ADD, receiver, &event);
    char byte = 'x';
    if (::send(sender, &byte, 1, 0) != 1) Die("send");
    constexpr int kRounds = 100000;
    const double wait = BestOf(3, [&] {
        for (int i = 0; i < kRounds; ++i) ::epoll_wait(epoll, &event, 1, 0);
    });
    if (::recv(receiver, &byte, 1, 0) != 1) Die("recv");
    const double nothing = BestOf(3, [&] {
        for (int i = 0; i < kRounds; ++i) (void)!::recv(receiver, &byte, 1, MSG_DONTWAIT);
    });
    std::printf("%-46s %9.3f us\n", "epoll_wait, ready", wait * 1e6 / kRounds);
    std::printf("%-46s %9.3f us\n", "recv, nothing there", nothing * 1e6 / kRounds);
    ::close(epoll);
    ::close(sender);
    ::close(receiver);
}

}  // namespace

int main() {
    const double inCache = NanosecondsPerFrame(kFloorChunk, 2000);
    std::printf("%-46s %9.1f ns\n", "parse and number a frame, in cache", inCache);
    std::printf("%-46s %9.1f ns\n", "parse and number a frame, 64 MiB from memory",
                NanosecondsPerFrame(std::size_t{64} << 20, 1));
    double floorCalls = 0;
    for (const std::size_t chunk : {std::size_t{120}, std::size_t{4096}, std::size_t{16384}, kFloorChunk,
                                    2 * kFloorChunk, 4 * kFloorChunk}) {
        const double calls = MicrosecondsPerChunk(chunk);
        if (chunk == kFloorChunk) floorCalls = calls;
        std::printf("send and recv %6zu bytes %21s %9.2f us\n", chunk, "", calls);
    }
    PrintReadiness();

    const double framesPerChunk = static_cast<double>(kFloorChunk) / 467;  // the mean frame of the mix
    const double microseconds = floorCalls + framesPerChunk * inCache / 1e3;
    std::printf("%-46s %9.3f ms per MB\n", "floor",
                microseconds / 1e3 / (static_cast<double>(kFloorChunk) / 1e6));
}
