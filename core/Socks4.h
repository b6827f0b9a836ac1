// The SOCKS4 request that opens a client's connection, and the reply to it. On the wire (big-endian):
//
//   request  0  1  version (4)        not examined        reply  0  1  0x00
//            1  1  command            not examined               1  1  0x5A, request granted
//            2  2  port                                          2  2  port, as in the request
//            4  4  IPv4 address                                  4  4  address, as in the request
//            8  n  user name, NUL     not examined
//            +  m  host name, NUL     SOCKS4a only: address 0.0.0.x
//
// No other reply is ever sent: a refused or failed connection is told by closing the client's socket.
#pragma once

#include <optional>
#include <string>

#include "core/modTools.h"

struct Socks4Request {
    std::string host;  // dotted IPv4 text, or the name of a SOCKS4a request
    std::string port;  // decimal text
    bool hasUserName;  // to its NUL; otherwise more of it may follow
    ByteString con;    // the six bytes of port and address, for the reply
};

// More than this is no request any more.
inline constexpr std::size_t kMaxSocks4Request = 512;

// Whether they are none: their first eight are printable ASCII, as of a browser that a web page has sent
// here.
bool IsNoSocks4Request(std::string_view bytes);

// The request that the bytes hold, or nothing while it is incomplete.
std::optional<Socks4Request> ParseSocks4Request(std::string_view bytes);

// The reply that grants the request; `con` as in Socks4Request.
ByteString MakeSocks4Reply(std::string_view con);
