// Instant messages from strangers: the data of SNAC (4, 6) and (4, 7).
#include <cstdint>

#include "base/RuntimeError.h"
#include "features/ImMessage.h"
#include "tests/fuzz/Check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteString data(bytes, bytes + size);
    for (auto* const read : {ReadIncomingMessage, ReadOutgoingMessage}) {
        try {
            const auto message = read(data);
            Check(data.find(message.screenName) != ByteString::npos, "the name stands in the data");
            // Two bytes of UCS-2 can become an entity of eight.
            Check(message.text.size() <= 4 * size, "the text comes from the data");
        } catch (const RuntimeError&) {
            // The one way in which data may be refused.
        }
    }
    return 0;
}
