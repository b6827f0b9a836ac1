// RawListener: the other end of a RawPeer's kind: a server on Winsock itself, which needs no loop.
#pragma once

#include <cstdint>
#include <memory>

#include "tests/contract/RawPeer.h"

class RawListener {
 public:
    explicit RawListener(std::uint16_t port = 0);  // on 127.0.0.1; 0 picks a free one
    ~RawListener();
    RawListener(const RawListener&) = delete;
    RawListener& operator=(const RawListener&) = delete;

    std::uint16_t Port() const;

    // Waits for the next client, five seconds at most; null when none comes.
    std::unique_ptr<RawPeer> Accept();

 private:
    std::uintptr_t socket_;
};
