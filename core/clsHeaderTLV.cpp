#include "core/clsHeaderTLV.h"

#include <utility>

namespace {
constexpr std::size_t kHeaderLength = 4;
}

void clsHeaderTLV::Create(std::int32_t typ, ByteString value) {
    type_ = typ;
    value_ = std::move(value);
}

std::size_t clsHeaderTLV::CreateFromString(std::string_view str, std::size_t start) {
    type_ = GetWord(str, start);
    const auto length = static_cast<std::size_t>(GetWord(str, start + 2));
    value_ = str.substr(start - 1 + kHeaderLength, length);
    return value_.size() + kHeaderLength;
}
