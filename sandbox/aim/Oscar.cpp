#include "sandbox/aim/Oscar.h"

#include <stdexcept>

namespace {

constexpr DWORD kPatienceMs = 20'000;  // bounds what hangs
constexpr std::size_t kFrameHeader = 6;
constexpr std::size_t kProxyReply = 8;

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what);
}

std::string Byte(std::uint32_t number) {
    return std::string(1, static_cast<char>(number & 0xFF));
}

std::uint16_t ReadNumber16(const std::string& bytes, std::size_t at) {
    if (at + 2 > bytes.size()) Fail("a record is cut off");
    return static_cast<std::uint16_t>(static_cast<std::uint8_t>(bytes[at]) << 8 |
                                      static_cast<std::uint8_t>(bytes[at + 1]));
}

sockaddr_in SocketAddress(const Address& address) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(address.port);
    result.sin_addr.s_addr = inet_addr(address.host.c_str());
    return result;
}

}  // namespace

std::string Number16(std::uint32_t number) {
    return Byte(number >> 8) + Byte(number);
}

std::string Tlv(std::uint16_t type, const std::string& value) {
    return Number16(type) + Number16(static_cast<std::uint32_t>(value.size())) + value;
}

std::string FindTlv(const std::string& tlvs, std::uint16_t type) {
    for (std::size_t at = 0; at < tlvs.size();) {
        const auto length = ReadNumber16(tlvs, at + 2);
        if (ReadNumber16(tlvs, at) == type) return tlvs.substr(at + 4, length);
        at += std::size_t{4} + length;
    }
    Fail("no TLV " + std::to_string(type));
}

std::uint32_t Frame::Snac() const {
    if (channel != kData || payload.size() < 10) return 0;
    return SnacId(ReadNumber16(payload, 0), ReadNumber16(payload, 2));
}

Line::Line(const Address& service, const std::optional<Address>& proxy)
    : socket_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
    const auto* const patience = reinterpret_cast<const char*>(&kPatienceMs);
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, patience, sizeof kPatienceMs);
    const auto peer = SocketAddress(proxy.value_or(service));
    if (connect(socket_, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0) {
        closesocket(socket_);
        Fail(proxy ? "the proxy does not answer" : "the service does not answer");
    }
    if (proxy) AskProxy(service);
}

void Line::AskProxy(const Address& service) {
    const auto peer = SocketAddress(service);
    const auto address = Number16(service.port) +
                         std::string(reinterpret_cast<const char*>(&peer.sin_addr), sizeof peer.sin_addr);
    SendAll(Byte(4) + Byte(1) + address + Byte(0));
    while (received_.size() < kProxyReply) {
        if (!Receive()) Fail("the proxy has hung up");
    }
    // What follows the reply at once would be lost by clients that read it as this one does.
    if (received_ != Byte(0) + Byte(0x5A) + address) Fail("the proxy refuses");
    received_.clear();
}

void Line::Send(Channel channel, const std::string& payload) {
    SendAll("*" + Byte(channel) + Number16(++sent_) + Number16(static_cast<std::uint32_t>(payload.size())) +
            payload);
}

void Line::SendSnac(std::uint32_t id, const std::string& data) {
    Send(kData, Number16(id >> 16) + Number16(id) + Number16(0) + Number16(0) + Number16(id) + data);
}

Frame Line::Await(std::uint32_t id) {
    for (;;) {
        auto frame = Next();
        if (frame.Snac() == id) return frame;
    }
}

std::string Line::Ask(std::uint32_t id, const std::string& data, std::uint32_t answer) {
    SendSnac(id, data);
    return Await(answer).Data();
}

void Line::Hello(const std::string& more) {
    Send(kHello, kVersion + more);
    if (const auto frame = Next(); frame.channel != kHello || frame.payload != kVersion)
        Fail("a strange greeting");
}

void Line::AnnounceTo(HWND window, UINT message) {
    WSAAsyncSelect(socket_, window, message, FD_READ | FD_CLOSE);
}

bool Line::TakeNews() {
    const bool more = Receive() || WSAGetLastError() == WSAEWOULDBLOCK;
    while (TakeFrame()) {
    }
    return more;
}

void Line::SendAll(const std::string& bytes) {
    if (send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0) != static_cast<int>(bytes.size()))
        Fail("the line is broken");
}

bool Line::Receive() {
    char bytes[4096];
    WSASetLastError(0);
    const int count = recv(socket_, bytes, sizeof bytes, 0);
    if (count > 0) received_.append(bytes, static_cast<std::size_t>(count));
    return count > 0;
}

std::optional<Frame> Line::TakeFrame() {
    if (received_.size() < kFrameHeader) return {};
    const auto number = ReadNumber16(received_, 2);
    if (received_[0] != '*' || (expected_ && number != *expected_)) Fail("a frame out of sequence");
    const auto length = ReadNumber16(received_, 4);
    if (received_.size() < kFrameHeader + length) return {};
    expected_ = static_cast<std::uint16_t>(number + 1);
    Frame frame{static_cast<std::uint8_t>(received_[1]), received_.substr(kFrameHeader, length)};
    received_.erase(0, kFrameHeader + length);
    return frame;
}

Frame Line::Next() {
    for (;;) {
        if (auto frame = TakeFrame()) return std::move(*frame);
        if (!Receive()) Fail("the line has ended");
    }
}
