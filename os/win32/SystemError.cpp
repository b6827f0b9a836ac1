#include "os/win32/SystemError.h"

#include <algorithm>
#include <iterator>

namespace os {
namespace {

struct SocketError {
    DWORD number;
    const char* text;
};

// clang-format off
constexpr SocketError kSocketErrors[] = {
    {10013, "Access to the port or address is not permitted."},
    {10048, "The port is in use already."},
    {10049, "The address is not one of this computer."},
    {10050, "The network is down."},
    {10051, "The network cannot be reached."},
    {10052, "The network has dropped the connection."},
    {10053, "The connection was aborted on this computer."},
    {10054, "The connection was reset by the other side."},
    {10055, "The system has no room for another connection."},
    {10056, "The socket is connected already."},
    {10057, "The socket is not connected."},
    {10058, "The connection has been shut down already."},
    {10059, "Too many references to the connection."},
    {10060, "The other side did not answer in time."},
    {10061, "The other side refuses the connection."},
    {10062, "The name leads back to itself."},
    {10063, "The name is too long."},
    {10064, "The computer is down."},
    {10065, "The computer cannot be reached."},
    {11001, "There is no computer of this name."},
    {11002, "The name could not be looked up now; no name server has answered."},
    {11003, "The name could not be looked up; the name server has failed."},
    {11004, "The name has no address."},
};
// clang-format on

}  // namespace

std::string SystemErrorText(DWORD number) {
    char text[256] = {};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        number, 0, text, sizeof text, nullptr);
    if (length > 0) return std::string(text, length);
    const auto* const own = std::find_if(std::begin(kSocketErrors), std::end(kSocketErrors),
                                         [=](const SocketError& error) { return error.number == number; });
    return own != std::end(kSocketErrors) ? own->text : "";
}

}  // namespace os
