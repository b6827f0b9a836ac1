#include "core/clsTLVChain.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"

void clsTLVChain::CreateFromString(std::string_view str, std::size_t start, std::size_t end,
                                   std::size_t maxTlvs) {
    std::size_t position = start;
    for (std::size_t count = 0; count < maxTlvs && position <= str.size() && position <= end; ++count) {
        clsHeaderTLV tlv;
        position += tlv.CreateFromString(str, position);
        Add(std::move(tlv));
    }
}

clsHeaderTLV* clsTLVChain::GetTLV(std::int32_t tlvType) {
    const auto found = std::find_if(records_.begin(), records_.end(),
                                    [=](const auto& record) { return record.tlvType() == tlvType; });
    return found != records_.end() ? &*found : nullptr;
}

clsHeaderTLV* clsTLVChain::GetTLVRev(std::int32_t tlvType) {
    const auto found = std::find_if(records_.rbegin(), records_.rend(),
                                    [=](const auto& record) { return record.tlvType() == tlvType; });
    return found != records_.rend() ? &*found : nullptr;
}

void clsTLVChain::Add(clsHeaderTLV newTlv) {
    records_.push_back(std::move(newTlv));
}

ByteString clsTLVChain::toString() const {
    ByteString bytes;
    for (const auto& record : records_) {
        const auto length = std::min<std::size_t>(record.Value().size(), 0x10000);  // WordToStr refuses this
        bytes += WordToStr(record.tlvType()) + WordToStr(static_cast<std::int32_t>(length)) + record.Value();
    }
    return bytes;
}
