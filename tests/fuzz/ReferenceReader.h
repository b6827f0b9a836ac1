// ReferenceReader: frames out of a stream by the rules alone. It keeps everything that an arrival has left
// and takes one frame at a time; what the relay does is compared with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

inline std::uint8_t ByteAt(std::string_view bytes, std::size_t offset) {
    return static_cast<std::uint8_t>(bytes[offset]);
}

inline std::size_t WordAt(std::string_view bytes, std::size_t offset) {
    return static_cast<std::size_t>(ByteAt(bytes, offset)) << 8 | ByteAt(bytes, offset + 1);
}

class ReferenceReader {
 public:
    std::vector<std::string> frames;

    void Feed(const std::string& chunk) {
        if (chunk.empty()) return;
        const auto before = frames.size();
        const auto bytes = kept_ + chunk;
        rest_ = bytes;
        while (TakeFrame()) {
        }
        kept_ = rest_;
        // Four bytes that end an arrival may be a whole frame; what follows decides.
        if (kept_.size() == 4) isOpen_ = true;
        isBehindFrame_ = frames.size() > before;
        if (isBehindFrame_) lastNumber_ = WordAt(frames.back(), 2);
    }

    // Nothing has come for a while: four bytes right behind a whole frame were one too, if they look like the
    // next one.
    void Silence() {
        if (!isBehindFrame_ || kept_.size() != 4) return;
        const bool isNext = WordAt(kept_, 2) == ((lastNumber_ + 1) & 0xFFFF);
        if (kept_[0] == '*' && ByteAt(kept_, 1) >= 1 && ByteAt(kept_, 1) <= 5 && isNext) End();
    }

    void End() {
        if (kept_.size() != 4) return;
        frames.push_back(kept_ + std::string(2, '\0'));
        kept_.clear();
        isOpen_ = false;
    }

 private:
    bool TakeFrame() {
        if (isOpen_) {
            const auto verdict = Judge();
            if (!verdict) return false;
            isOpen_ = false;
            if (*verdict) {
                frames.push_back(Take(4) + std::string(2, '\0'));
                return true;
            }
        }
        if (rest_.size() < 6 || rest_.size() < 6 + WordAt(rest_, 4)) return false;
        frames.push_back(Take(6 + WordAt(rest_, 4)));
        return true;
    }

    std::string Take(std::size_t size) {
        const std::string taken(rest_.substr(0, size));
        rest_.remove_prefix(size);
        return taken;
    }

    // Whether the four bytes were a frame: the next four are the beginning of the next one.
    std::optional<bool> Judge() const {
        const auto next = (WordAt(rest_, 2) + 1) & 0xFFFF;
        const auto fits = [&](std::size_t offset) {
            const auto byte = ByteAt(rest_, offset);
            if (offset == 4) return byte == '*';
            if (offset == 5) return byte >= 1 && byte <= 5;
            return offset == 6 ? byte == next >> 8 : byte == (next & 0xFF);
        };
        for (std::size_t offset = 4; offset < 8; ++offset) {
            if (offset >= rest_.size()) return {};
            if (!fits(offset)) return false;
        }
        return true;
    }

    std::string kept_;       // between two arrivals
    std::string_view rest_;  // during one
    bool isOpen_ = false;
    bool isBehindFrame_ = false;
    std::size_t lastNumber_ = 0;
};
