// OSCAR as far as a client needs it to sign on; all numbers big-endian.
//
// FLAP frame: "*", channel (1), sequence number (2), length (2), payload.
// SNAC, the payload on channel 2: family (2), subtype (2), flags (2), request (4), data.
// TLV: type (2), length (2), value.
#pragma once

#include <winsock2.h>

#include <cstdint>
#include <optional>
#include <string>

#include "sandbox/aim/Settings.h"

enum Channel : std::uint8_t { kHello = 1, kData = 2, kGoodbye = 4 };

inline const std::string kVersion{0, 0, 0, 1};

std::string Number16(std::uint32_t number);
std::string Tlv(std::uint16_t type, const std::string& value);
// The value of the first TLV of the type; throws std::runtime_error when there is none.
std::string FindTlv(const std::string& tlvs, std::uint16_t type);

struct Frame {
    std::uint8_t channel = 0;
    std::string payload;

    // Family and subtype as one number; 0 for a frame without a SNAC.
    std::uint32_t Snac() const;
    std::string Data() const { return payload.substr(10); }
};

constexpr std::uint32_t SnacId(std::uint16_t family, std::uint16_t subtype) {
    return std::uint32_t{family} << 16 | subtype;
}

// One connection to the service. Everything throws std::runtime_error when it fails or takes too long.
class Line {
 public:
    // Through the SOCKS4 proxy, or directly when there is none.
    Line(const Address& service, const std::optional<Address>& proxy);
    ~Line() { closesocket(socket_); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    void Send(Channel channel, const std::string& payload = {});
    void SendSnac(std::uint32_t id, const std::string& data = {});
    // The next frame with this SNAC; others are passed over.
    Frame Await(std::uint32_t id);
    // Sends a SNAC and gives the data of the answer.
    std::string Ask(std::uint32_t id, const std::string& data, std::uint32_t answer);
    // Greets, and waits for the greeting of the other side.
    void Hello(const std::string& more = {});

    // From now on news is announced to the window by this message instead of being waited for.
    void AnnounceTo(HWND window, UINT message);
    // Takes the frames that have come; false when the line has ended. Frames must be in sequence.
    bool TakeNews();

 private:
    void AskProxy(const Address& service);
    void SendAll(const std::string& bytes);
    bool Receive();
    std::optional<Frame> TakeFrame();
    Frame Next();

    SOCKET socket_;
    std::string received_;
    std::uint16_t sent_ = 0;
    std::optional<std::uint16_t> expected_;
};
