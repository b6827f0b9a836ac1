#include "core/clsHeaderFLAP.h"

#include <algorithm>

#include "base/RuntimeError.h"

namespace {
constexpr std::size_t kHeaderLength = 6;
// A buffer of this length reads as an empty frame without a length field.
constexpr std::size_t kGoodbyeLength = 4;
}  // namespace

void clsHeaderFLAP::Create(std::int32_t channelId, ByteString data) {
    channelId_ = channelId;
    seqNum_ = 0;
    dataLen_ = static_cast<std::int32_t>(data.size());
    data_ = std::move(data);
    isIncomplete_ = false;
}

void clsHeaderFLAP::ParseData(std::string_view strData, std::size_t start) {
    try {
        channelId_ = GetByte(strData, start + 1);
        seqNum_ = GetWord(strData, start + 2);
        if (strData.size() == kGoodbyeLength) {
            dataLen_ = 0;
            data_.clear();
            return;
        }
        dataLen_ = GetWord(strData, start + 4);
    } catch (const RuntimeError&) {
        isIncomplete_ = true;
        return;
    }
    const auto payload = strData.substr(std::min(start - 1 + kHeaderLength, strData.size()));
    data_ = payload.substr(0, static_cast<std::size_t>(dataLen_));
    isIncomplete_ = data_.size() < static_cast<std::size_t>(dataLen_);
    messageLen_ = dataLen_ + static_cast<std::int32_t>(kHeaderLength);
}

ByteString clsHeaderFLAP::toString() const {
    return "*" + ByteToStr(channelId_) + WordToStr(seqNum_) + WordToStr(dataLen_) + data_;
}
