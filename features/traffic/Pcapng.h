// Pcapng: a capture file of what passes, for Wireshark and its kin (the PCAP Next Generation format,
// draft-ietf-opsawg-pcapng). What is captured are frames, not packets; so each stream gets IP and TCP headers
// made up around its true addresses and ports, as if it had crossed a network without a loss.
//
// Two interfaces: 0 is the client's side of Wrenlow, 1 the server's.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace pcapng {

// An IP address and a port. Version 4 addresses fill the first four bytes, in network order.
struct Endpoint {
    bool isV6 = false;
    std::array<std::uint8_t, 16> address = {};
    std::uint16_t port = 0;
};

// What a file begins with: the section and its two interfaces. `program` is named as its writer.
std::string FileHead(std::string_view program);

// One TCP connection in the capture. Both ends must be of the same version of IP.
class Stream {
 public:
    Stream(std::uint32_t interfaceNumber, const Endpoint& caller, const Endpoint& called)
        : interface_(interfaceNumber), ends_{caller, called} {}

    // The blocks of a file for what happens, to be appended to it; `microseconds` since 1970. Began comes
    // first and Ended last; Sent may be as long as it likes and becomes several packets where one cannot hold
    // it.
    std::string Began(std::uint64_t microseconds);
    std::string Sent(bool byCaller, std::string_view bytes, std::uint64_t microseconds);
    std::string Ended(bool byCaller, std::uint64_t microseconds);

 private:
    std::string Packet(bool byCaller, std::uint8_t flags, std::string_view payload,
                       std::uint64_t microseconds);

    std::uint32_t interface_;
    std::array<Endpoint, 2> ends_;
    std::array<std::uint32_t, 2> next_ = {1000, 5000};   // sequence number of the next byte of each end
    std::array<std::uint32_t, 2> acked_ = {1000, 5000};  // up to which the other end has confirmed them
};

}  // namespace pcapng
