// ReadBuffer: the one buffer that all sockets read into, and the gathering of what a handler sends while it
// looks at an arrival.
//
// Parts of the buffer are remembered where they lie, other bytes are copied to a small buffer of the
// gathering; what is adjacent in memory becomes one part. Everything leaves in one system call when the
// handler returns. Only one receiver is gathered for at a time: a relay has one.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

#include "os/Sockets.h"

namespace net {

std::span<char> ReadBuffer();

class Gathering {
 public:
    // Whether bytes were taken; otherwise there is no room and the gathering must be sent first.
    bool Add(std::string_view bytes);

    std::size_t Size() const { return size_; }
    std::span<const os::Part> Parts() const { return {parts_.data(), count_}; }
    void Clear();

 private:
    bool AddPart(const char* bytes, std::size_t count);

    static constexpr std::size_t kCopiedBytes = std::size_t{64} * 1024;

    std::array<os::Part, 256> parts_;
    std::size_t count_ = 0;
    std::size_t size_ = 0;
    std::unique_ptr<char[]> copied_;  // made when it is needed first
    std::size_t copiedSize_ = 0;
};

}  // namespace net
