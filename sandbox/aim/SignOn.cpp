#include "sandbox/aim/SignOn.h"

#include <cstdlib>

namespace {

// The answer that opens the BOS connection: its address (TLV 5) and a cookie (TLV 6).
std::string Authorise(const std::string& name, const Address& service, const std::optional<Address>& proxy) {
    Line line(service, proxy);
    line.Hello();
    line.Ask(SnacId(0x17, 6), Tlv(1, name), SnacId(0x17, 7));
    const std::string anyPassword(16, 'x');  // its hash; the service looks at neither
    const auto welcome = line.Ask(SnacId(0x17, 2), Tlv(1, name) + Tlv(0x25, anyPassword), SnacId(0x17, 3));
    line.Send(kGoodbye);
    return welcome;
}

Address ParseAddress(const std::string& text) {
    const auto colon = text.find(':');
    return {text.substr(0, colon), static_cast<std::uint16_t>(std::atoi(text.c_str() + colon + 1))};
}

}  // namespace

std::unique_ptr<Line> SignOn(const std::string& name, const Address& service,
                             const std::optional<Address>& proxy) {
    const auto welcome = Authorise(name, service, proxy);
    auto bos = std::make_unique<Line>(ParseAddress(FindTlv(welcome, 5)), proxy);
    bos->Hello(Tlv(6, FindTlv(welcome, 6)));
    bos->Await(SnacId(1, 3));
    bos->Ask(SnacId(1, 6), {}, SnacId(1, 7));
    bos->SendSnac(SnacId(1, 8), Number16(1));
    bos->Ask(SnacId(1, 0xE), {}, SnacId(1, 0xF));  // the user's own information
    bos->SendSnac(SnacId(1, 2));                   // ready
    return bos;
}
