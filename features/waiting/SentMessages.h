// SentMessages: the client's last instant messages, as long as the server may still refuse them. Every
// message passes here, so remembering one is a copy into memory that is there already.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/modTools.h"

struct SentMessage {
    ByteString data;      // of SNAC (0x0004, 0x0006), as it went to the server
    std::string shownTo;  // the receiver as the client knows him
};

class SentMessages {
 public:
    static constexpr std::size_t kMaxEntries = 32;
    static constexpr std::size_t kMaxBytes = 8192;  // bytes; servers take no larger ones
    static constexpr std::int64_t kRefusedWithinMs = 30'000;

    void Remember(std::uint32_t request, std::string_view data, std::string_view shownTo, std::int64_t now);

    // The message of that request, which is forgotten. Nothing where two carry the number, as of clients that
    // do not count: nobody can tell which is meant, and the wrong one must not be sent again.
    std::optional<SentMessage> Take(std::uint32_t request, std::int64_t now);

    // The server has taken it.
    void Forget(std::uint32_t request);

 private:
    struct Entry {
        SentMessage message;
        std::uint32_t request = 0;
        std::int64_t at = 0;
        bool isOpen = false;
        bool isAlone = true;  // no other open one had the number
    };
    bool IsOpen(const Entry& entry, std::uint32_t request, std::int64_t now) const;

    std::vector<Entry> entries_;
    std::size_t next_ = 0;
};
