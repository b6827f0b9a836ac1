// SendQueue: bytes that the system has not taken yet, in blocks, so that a queue neither moves nor doubles
// its memory while it grows and gives it back while it empties. An empty queue holds no memory.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "os/Sockets.h"

namespace net {

class SendQueue {
 public:
    SendQueue() = default;
    SendQueue(const SendQueue&) = delete;
    SendQueue& operator=(const SendQueue&) = delete;
    ~SendQueue() { Clear(); }

    std::size_t Size() const { return size_; }
    bool Empty() const { return size_ == 0; }

    void Append(std::string_view bytes);

    // Describes the front of the queue, as many parts as there is room for; returns their number.
    std::size_t Describe(std::span<os::Part> parts) const;

    void DropFront(std::size_t bytes);
    void Clear();

 private:
    struct Block;

    void DropBlock();

    Block* first_ = nullptr;
    Block* last_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace net
