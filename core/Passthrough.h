// Passthrough: connections that carry no frames. Clients send direct messages and files to each other, and
// newer ones speak TLS; read as frames, such bytes would wait for a length that never fills. Their first
// bytes tell:
//
//   "ODC2"                 direct messages      "OFT2", "OFT3"   files
//   0x16 0x03              TLS, a handshake record (RFC 8446, section 5.1)
#pragma once

#include <cstdint>
#include <string_view>

enum class Contents : std::uint8_t { Undecided, Frames, Bytes };

// What a stream carries that begins so. Undecided only while fewer than four bytes are there, all of which
// one of the above begins with.
Contents ContentsOf(std::string_view beginning);
