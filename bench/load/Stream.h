// Stream: one end of a connection. It numbers what it sends and checks everything that arrives: marker,
// sequence number, index and hash of every frame.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "bench/load/Frames.h"

namespace bench {

struct Frame {
    std::uint8_t channel;
    std::uint16_t subtype;  // 0 for frames that are not ours (sign-on)
    const std::uint8_t* payload;
    std::size_t length;
    const std::uint8_t* Body() const { return payload + kSnacHeader + kMeta; }
    std::size_t BodyLength() const { return length - kSnacHeader - kMeta; }
};

class Stream {
 public:
    int fd = -1;

    std::uint64_t rxFrames = 0, rxBytes = 0;
    std::uint64_t txFrames = 0, txBytes = 0;
    bool peerClosed = false;

    // Source mode: data frames are produced until the budget or the time is used up.
    bool source = false;
    std::uint64_t sourceBudget = 0;
    double sourceUntil = 0;

    explicit Stream(int socket, std::uint16_t firstSeq) : fd(socket), txSeq_(firstSeq) {}
    ~Stream() { CloseFd(); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    void CloseFd() {
        if (fd >= 0) ::close(fd);
        fd = -1;
    }

    void Queue(const Template& t) {
        std::size_t at = out_.size();
        out_.insert(out_.end(), t.bytes.begin(), t.bytes.end());
        std::uint8_t* f = &out_[at];
        Put16(f + 2, txSeq_++);
        Store64(f + 16, txIndex_);
        Store64(f + 24, t.bodyHash ^ MixIndex(txIndex_));
        ++txIndex_;
        ++txFrames;
    }

    void QueueRaw(std::uint8_t channel, const std::uint8_t* payload, std::size_t n) {
        std::uint8_t header[kFlapHeader] = {0x2A, channel};
        Put16(header + 2, txSeq_++);
        Put16(header + 4, std::uint16_t(n));
        out_.insert(out_.end(), header, header + kFlapHeader);
        out_.insert(out_.end(), payload, payload + n);
        ++txFrames;
    }

    void QueueCounts(Subtype subtype, std::uint64_t a, std::uint64_t b) {
        Bytes body(16);
        Store64(&body[0], a);
        Store64(&body[8], b);
        Queue(MakeTemplate(subtype, body));
    }

    Bytes TakeOutput() { return std::exchange(out_, {}); }  // for tests that cut frames up

    bool HasOutput() const { return outPos_ < out_.size() || source; }

    // Sends what the socket takes. Returns false when the peer is gone.
    bool Flush(int flags) {
        for (;;) {
            if (outPos_ == out_.size()) {
                out_.clear();
                outPos_ = 0;
                if (source) Refill();
                if (out_.empty()) return true;
            }
            ssize_t n = ::send(fd, &out_[outPos_], out_.size() - outPos_, flags | MSG_NOSIGNAL);
            if (n < 0) {
                if (errno == EINTR) continue;
                return errno == EAGAIN && (flags & MSG_DONTWAIT);
            }
            outPos_ += std::size_t(n);
            txBytes += std::uint64_t(n);
        }
    }

    // One recv; hands every complete, verified frame to onFrame.
    // Returns false when nothing was there (only with MSG_DONTWAIT).
    template <class OnFrame>
    bool Receive(int flags, OnFrame onFrame) {
        static thread_local Bytes scratch(256 * 1024);
        std::copy(rest_.begin(), rest_.end(), scratch.begin());
        std::size_t have = rest_.size();
        ssize_t n = ::recv(fd, &scratch[have], scratch.size() - have, flags);
        if (n < 0 && errno == EINTR) return true;
        if (n < 0 && errno == EAGAIN) {
            if (flags & MSG_DONTWAIT) return false;
            Fail("time-out while waiting for a frame");
        }
        if (n <= 0) {
            if (n == 0 && !rest_.empty()) Fail("connection closed inside a frame");
            peerClosed = true;
            return true;
        }
        rxBytes += std::uint64_t(n);
        have += std::size_t(n);
        std::size_t pos = 0;
        while (have - pos >= kFlapHeader) {
            const std::uint8_t* p = &scratch[pos];
            std::size_t length = Get16(p + 4);
            CheckHeader(p);
            if (have - pos < kFlapHeader + length) break;
            Frame frame{p[1], 0, p + kFlapHeader, length};
            CheckPayload(frame);
            ++rxFrames;
            pos += kFlapHeader + length;
            onFrame(frame);
        }
        rest_.assign(&scratch[pos], &scratch[pos] + (have - pos));
        return true;
    }

 private:
    Bytes out_;
    std::size_t outPos_ = 0;
    std::uint16_t txSeq_;
    std::uint64_t txIndex_ = 0;
    Bytes rest_;
    bool seqKnown_ = false;
    std::uint16_t rxSeq_ = 0;
    std::uint64_t rxIndex_ = 0;

    void Refill() {
        const auto& mix = FrameMix();
        while (out_.size() < 96 * 1024) {
            if (txBytes + out_.size() >= sourceBudget || Now() >= sourceUntil) {
                source = false;
                QueueCounts(kEnd, txFrames, 0);
                return;
            }
            for (int i = 0; i < 32; ++i) Queue(mix[txIndex_ % mix.size()]);
        }
    }

    void CheckHeader(const std::uint8_t* p) {
        std::uint16_t seq = Get16(p + 2);
        std::string where = " (after " + std::to_string(rxFrames) + " good frames)";
        if (p[0] != 0x2A) Fail("frame without the 2A marker" + where);
        if (seqKnown_ && seq != rxSeq_)
            Fail("sequence " + std::to_string(seq) + " instead of " + std::to_string(rxSeq_) + where);
        if (Get16(p + 4) == 0) Fail("empty frame that nobody sent" + where);
        if (!seqKnown_) {
            seqKnown_ = true;
            rxSeq_ = seq;
        }
    }

    void CheckPayload(Frame& f) {
        ++rxSeq_;
        if (f.channel != 2) return;  // sign-on
        if (f.length < kSnacHeader + kMeta || Get16(f.payload) != kFamily) Fail("payload is not one of ours");
        f.subtype = Get16(f.payload + 2);
        std::uint64_t index = Load64(f.payload + kSnacHeader);
        std::uint64_t hash = Load64(f.payload + kSnacHeader + 8);
        if (index != rxIndex_++) Fail("frame lost, repeated or out of order");
        if (hash != (HashBytes(f.Body(), f.BodyLength()) ^ MixIndex(index))) Fail("payload damaged");
    }
};

using StreamPtr = std::unique_ptr<Stream>;

}  // namespace bench
