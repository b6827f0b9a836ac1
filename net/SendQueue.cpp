#include "net/SendQueue.h"

#include <algorithm>
#include <cstring>

namespace net {

struct SendQueue::Block {
    Block* next = nullptr;
    std::size_t begin = 0;
    std::size_t end = 0;
    char bytes[std::size_t{16} * 1024 - sizeof(void*) - 2 * sizeof(std::size_t)];
};

void SendQueue::Append(std::string_view bytes) {
    while (!bytes.empty()) {
        if (last_ == nullptr || last_->end == sizeof last_->bytes) {
            auto* const block = new Block;
            (last_ == nullptr ? first_ : last_->next) = block;
            last_ = block;
        }
        const auto count = std::min(bytes.size(), sizeof last_->bytes - last_->end);
        std::memcpy(last_->bytes + last_->end, bytes.data(), count);
        last_->end += count;
        size_ += count;
        bytes.remove_prefix(count);
    }
}

std::size_t SendQueue::Describe(std::span<os::Part> parts) const {
    std::size_t count = 0;
    for (auto* block = first_; block != nullptr && count < parts.size(); block = block->next)
        parts[count++] = {block->bytes + block->begin, block->end - block->begin};
    return count;
}

void SendQueue::DropFront(std::size_t bytes) {
    bytes = std::min(bytes, size_);
    size_ -= bytes;
    while (bytes > 0) {
        const auto count = std::min(bytes, first_->end - first_->begin);
        first_->begin += count;
        bytes -= count;
        if (first_->begin == first_->end) DropBlock();
    }
}

void SendQueue::Clear() {
    while (first_ != nullptr) DropBlock();
    size_ = 0;
}

void SendQueue::DropBlock() {
    auto* const block = first_;
    first_ = block->next;
    if (first_ == nullptr) last_ = nullptr;
    delete block;
}

}  // namespace net
