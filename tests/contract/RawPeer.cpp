#include <chrono>
#include <stdexcept>

#include "net/EventLoop.h"
#include "tests/contract/Implementation.h"

namespace {
constexpr os::Address kLoopback{{127, 0, 0, 1}, false};
constexpr std::chrono::seconds kPatience(5);
}  // namespace

RawPeer::RawPeer(std::uint16_t port) : socket_(os::OpenSocket(kLoopback)) {
    os::StartConnecting(socket_.Get(), kLoopback, port);
    const auto begin = std::chrono::steady_clock::now();
    while (os::EndsOf(socket_.Get()).there.port == 0) {
        if (std::chrono::steady_clock::now() - begin > kPatience)
            throw std::runtime_error("the raw peer cannot connect");
    }
}

void RawPeer::Send(std::string_view bytes) {
    const os::Part part{bytes.data(), bytes.size()};
    if (os::Send(socket_.Get(), {&part, 1}).bytes != bytes.size())
        throw std::runtime_error("the raw peer cannot send");
}

void RawPeer::EndDirection() {
    os::EndSending(socket_.Get());
}

void RawPeer::Abort() {
    os::ResetOnClose(socket_.Get());
    socket_.Close();
}

std::string RawPeer::Receive(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t filled = 0;
    const auto isOver = [&] {
        const auto taken = os::Receive(socket_.Get(), std::span(bytes).subspan(filled));
        filled += taken.bytes;
        return filled == count || (taken.outcome != os::Outcome::WouldBlock && taken.bytes == 0);
    };
    net::RunEventLoopUntil(isOver, std::chrono::milliseconds(kPatience).count());
    bytes.resize(filled);
    return bytes;
}
