#include "net/ReadBuffer.h"

#include <cstring>
#include <functional>

namespace net {
namespace {

alignas(64) char readBuffer[os::kReadBytes];

bool LiesInReadBuffer(const char* bytes) {
    return !std::less<>()(bytes, readBuffer) && std::less<>()(bytes, readBuffer + os::kReadBytes);
}

}  // namespace

std::span<char> ReadBuffer() {
    return readBuffer;
}

bool Gathering::Add(std::string_view bytes) {
    if (LiesInReadBuffer(bytes.data())) return AddPart(bytes.data(), bytes.size());

    if (!copied_) copied_ = std::make_unique_for_overwrite<char[]>(kCopiedBytes);
    if (bytes.size() > kCopiedBytes - copiedSize_) return false;
    auto* const copy = copied_.get() + copiedSize_;
    if (!AddPart(copy, bytes.size())) return false;
    std::memcpy(copy, bytes.data(), bytes.size());
    copiedSize_ += bytes.size();
    return true;
}

bool Gathering::AddPart(const char* bytes, std::size_t count) {
    // The frames of an arrival mostly pass on as they lie: they are one part.
    if (count_ > 0) {
        auto& last = parts_[count_ - 1];
        if (last.bytes + last.size == bytes) {
            last.size += count;
            size_ += count;
            return true;
        }
    }
    if (count_ == parts_.size()) return false;
    parts_[count_++] = {bytes, count};
    size_ += count;
    return true;
}

void Gathering::Clear() {
    count_ = size_ = copiedSize_ = 0;
}

}  // namespace net
