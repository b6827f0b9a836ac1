// Input: a fuzzer's bytes, taken from the front; at their end everything is empty and every number 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class Input {
 public:
    Input(const std::uint8_t* bytes, std::size_t size) : rest_(reinterpret_cast<const char*>(bytes), size) {}

    bool IsEmpty() const { return rest_.empty(); }
    std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : static_cast<std::uint8_t>(Bytes(1).front()); }
    // As many as there are, at most.
    std::string Bytes(std::size_t count) {
        std::string bytes(rest_.substr(0, count));
        rest_.remove_prefix(bytes.size());
        return bytes;
    }
    std::string Rest() { return Bytes(rest_.size()); }

 private:
    std::string_view rest_;
};
