// A SOCKS4 request that has been understood stays understood when more bytes come, and names what it holds.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/Socks4.h"
#include "tests/fuzz/Check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto request = ParseSocks4Request(bytes);
    Check(request.has_value() || size < 8 || (data[4] == 0 && data[5] == 0 && data[6] == 0),
          "eight bytes are enough but for a name");
    if (!request) return 0;
    Check(!request->host.empty() && !request->port.empty() && request->con == bytes.substr(2, 6),
          "host, port and the six bytes");
    Check(MakeSocks4Reply(request->con).size() == 8, "a reply of eight bytes");
    const auto longer = ParseSocks4Request(std::string(bytes) + "more");
    Check(longer && longer->host == request->host, "later bytes change nothing");
    return 0;
}
