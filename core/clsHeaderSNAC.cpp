#include "core/clsHeaderSNAC.h"

#include "base/RuntimeError.h"

void clsHeaderSNAC::Create(std::int32_t famId, std::int32_t subId, std::int32_t flag1, std::int32_t flag2,
                           ByteString data) {
    famId_ = famId;
    subId_ = subId;
    flag1_ = flag1;
    flag2_ = flag2;
    requestId_.assign(4, '\0');
    data_ = std::move(data);
    isIncomplete_ = false;
}

void clsHeaderSNAC::ParseData(std::string_view strData, std::size_t start) {
    try {
        famId_ = GetWord(strData, start);
        subId_ = GetWord(strData, start + 2);
        flag1_ = GetByte(strData, start + 4);
        flag2_ = GetByte(strData, start + 5);
        GetDWord(strData, start + 6);  // fails when the request identifier is not whole
    } catch (const RuntimeError&) {
        isIncomplete_ = true;
        return;
    }
    requestId_ = strData.substr(start + 5, 4);
    data_ = strData.substr(start - 1 + kHeaderLength);
    isIncomplete_ = false;
}

ByteString clsHeaderSNAC::toString() const {
    return WordToStr(famId_) + WordToStr(subId_) + ByteToStr(flag1_) + ByteToStr(flag2_) + requestId_ + data_;
}
