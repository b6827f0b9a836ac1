#include "core/Passthrough.h"

#include <initializer_list>

Contents ContentsOf(std::string_view beginning) {
    using namespace std::string_view_literals;
    for (const auto signature : {"ODC2"sv, "OFT2"sv, "OFT3"sv, "\x16\x03"sv}) {
        if (beginning.starts_with(signature)) return Contents::Bytes;
        if (signature.starts_with(beginning)) return Contents::Undecided;
    }
    return Contents::Frames;
}
