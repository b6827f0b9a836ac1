#include "features/traffic/Pcapng.h"

#include <algorithm>

namespace pcapng {
namespace {

// Blocks are written in little-endian order, which their magic number says; IP and TCP are big-endian.
void AppendLittle(std::string& bytes, std::uint64_t number, unsigned width) {
    for (unsigned i = 0; i < width; ++i) bytes += static_cast<char>(number >> 8 * i & 0xFF);
}

void AppendBig(std::string& bytes, std::uint64_t number, unsigned width) {
    for (unsigned i = width; i-- > 0;) bytes += static_cast<char>(number >> 8 * i & 0xFF);
}

void Pad(std::string& bytes) {
    bytes.resize((bytes.size() + 3) / 4 * 4);
}

std::string Option(std::uint16_t code, std::string_view value) {
    std::string option;
    AppendLittle(option, code, 2);
    AppendLittle(option, value.size(), 2);
    option += value;
    Pad(option);
    return option;
}

// Type, total length, body, total length again.
std::string Block(std::uint32_t type, std::string body) {
    Pad(body);
    const auto length = body.size() + 12;
    std::string block;
    AppendLittle(block, type, 4);
    AppendLittle(block, length, 4);
    block += body;
    AppendLittle(block, length, 4);
    return block;
}

constexpr std::uint16_t kEndOfOptions = 0;

std::string InterfaceBlock(std::string_view name) {
    constexpr std::uint16_t kRawIp = 101;  // LINKTYPE_RAW: a packet begins with its IP header
    constexpr std::uint16_t kName = 2;
    std::string body;
    AppendLittle(body, kRawIp, 2);
    AppendLittle(body, 0, 2);
    AppendLittle(body, 0, 4);  // no limit for the length of a packet
    return Block(1, body + Option(kName, name) + Option(kEndOfOptions, {}));
}

// The Internet checksum (RFC 1071).
std::uint16_t Checksum(std::string_view bytes) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint32_t byte = static_cast<std::uint8_t>(bytes[i]);
        sum += i % 2 == 0 ? byte << 8 : byte;
    }
    while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<std::uint16_t>(~sum & 0xFFFF);
}

void Put(std::string& bytes, std::size_t at, std::uint16_t word) {
    bytes[at] = static_cast<char>(word >> 8);
    bytes[at + 1] = static_cast<char>(word & 0xFF);
}

std::string AddressBytes(const Endpoint& end) {
    return std::string(end.address.begin(), end.address.begin() + (end.isV6 ? 16 : 4));
}

constexpr std::uint8_t kTcp = 6;

std::string IpHeader(const Endpoint& from, const Endpoint& to, std::size_t payload) {
    constexpr std::uint8_t kHops = 64;
    std::string header;
    if (from.isV6) {  // RFC 8200
        AppendBig(header, 0x60000000, 4);
        AppendBig(header, payload, 2);
        AppendBig(header, kTcp, 1);
        AppendBig(header, kHops, 1);
        return header + AddressBytes(from) + AddressBytes(to);
    }
    AppendBig(header, 0x4500, 2);  // RFC 791: version 4, five words
    AppendBig(header, payload + 20, 2);
    AppendBig(header, 0x00004000, 4);  // not to be cut
    AppendBig(header, kHops, 1);
    AppendBig(header, kTcp, 1);
    AppendBig(header, 0, 2);
    header += AddressBytes(from) + AddressBytes(to);
    Put(header, 10, Checksum(header));
    return header;
}

enum Flag : std::uint8_t { kFin = 1, kSyn = 2, kPush = 8, kAck = 16 };

}  // namespace

std::string FileHead(std::string_view program) {
    constexpr std::uint16_t kWriter = 4;
    std::string body;
    AppendLittle(body, 0x1A2B3C4D, 4);  // says that this writer puts the low byte first
    AppendLittle(body, 1, 2);           // version 1.0
    AppendLittle(body, 0, 2);
    AppendLittle(body, UINT64_MAX, 8);  // how long the section will be is not known
    return Block(0x0A0D0D0A, body + Option(kWriter, program) + Option(kEndOfOptions, {})) +
           InterfaceBlock("AIM client - Wrenlow") + InterfaceBlock("Wrenlow - server");
}

std::string Stream::Began(std::uint64_t microseconds) {
    auto blocks = Packet(true, kSyn, {}, microseconds);  // each takes the numbers that the one before leaves
    blocks += Packet(false, kSyn | kAck, {}, microseconds);
    blocks += Packet(true, kAck, {}, microseconds);
    return blocks;
}

std::string Stream::Sent(bool byCaller, std::string_view bytes, std::uint64_t microseconds) {
    constexpr std::size_t kPacket = 32'768;  // well below what an IP header can tell
    std::string blocks;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(kPacket, bytes.size()))) {
        blocks += Packet(byCaller, kPush | kAck, bytes.substr(0, kPacket), microseconds);
        // No window has room for more that is not confirmed.
        if (const std::size_t end = byCaller ? 0 : 1; next_[end] - acked_[end] > kPacket / 2)
            blocks += Packet(!byCaller, kAck, {}, microseconds);
    }
    return blocks;
}

std::string Stream::Ended(bool byCaller, std::uint64_t microseconds) {
    auto blocks = Packet(byCaller, kFin | kAck, {}, microseconds);
    blocks += Packet(!byCaller, kFin | kAck, {}, microseconds);
    blocks += Packet(byCaller, kAck, {}, microseconds);
    return blocks;
}

std::string Stream::Packet(bool byCaller, std::uint8_t flags, std::string_view payload,
                           std::uint64_t microseconds) {
    const std::size_t from = byCaller ? 0 : 1;
    const std::size_t to = 1 - from;
    std::string segment;  // RFC 9293
    AppendBig(segment, ends_[from].port, 2);
    AppendBig(segment, ends_[to].port, 2);
    AppendBig(segment, next_[from], 4);
    AppendBig(segment, (flags & kAck) != 0 ? next_[to] : 0, 4);
    if ((flags & kAck) != 0) acked_[to] = next_[to];
    AppendBig(segment, 0x50, 1);  // five words
    AppendBig(segment, flags, 1);
    AppendBig(segment, 0xFFFF, 2);
    AppendBig(segment, 0, 4);
    segment += payload;
    next_[from] += static_cast<std::uint32_t>(payload.size()) + ((flags & (kSyn | kFin)) != 0 ? 1 : 0);

    std::string summed = AddressBytes(ends_[from]) + AddressBytes(ends_[to]);
    AppendBig(summed, kTcp, 4);
    AppendBig(summed, segment.size(), 4);
    Put(segment, 16, Checksum(summed + segment));

    const auto packet = IpHeader(ends_[from], ends_[to], segment.size()) + segment;
    std::string body;
    AppendLittle(body, interface_, 4);
    AppendLittle(body, microseconds >> 32, 4);
    AppendLittle(body, microseconds & 0xFFFFFFFF, 4);
    AppendLittle(body, packet.size(), 4);
    AppendLittle(body, packet.size(), 4);
    return Block(6, body + packet);
}

}  // namespace pcapng
