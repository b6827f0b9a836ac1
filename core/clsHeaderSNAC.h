// clsHeaderSNAC: the command that the payload of a channel-2 FLAP frame holds. On the wire (big-endian):
//
//   offset  width  field
//   0       2      family
//   2       2      subtype
//   4       1      flag byte 1
//   5       1      flag byte 2
//   6       4      request identifier
//   10      rest   data
#pragma once

#include "core/modTools.h"

class clsHeaderSNAC {
 public:
    static constexpr std::size_t kHeaderLength = 10;

    // A command of our own: request identifier 0, complete.
    void Create(std::int32_t famId, std::int32_t subId, std::int32_t flag1, std::int32_t flag2,
                ByteString data);

    // Reads the command at position `start`. Never throws: a string too short for the header sets
    // isIncomplete and leaves the fields that could not be read as they were.
    void ParseData(std::string_view strData, std::size_t start = 1);

    ByteString toString() const;

    std::int32_t FamID() const { return famId_; }
    void FamID(std::int32_t value) { famId_ = value; }
    std::int32_t SubId() const { return subId_; }
    void SubId(std::int32_t value) { subId_ = value; }
    std::int32_t Flag1() const { return flag1_; }
    void Flag1(std::int32_t value) { flag1_ = value; }
    std::int32_t Flag2() const { return flag2_; }
    void Flag2(std::int32_t value) { flag2_ = value; }
    const ByteString& Data() const { return data_; }
    void Data(ByteString value) { data_ = std::move(value); }
    bool isIncomplete() const { return isIncomplete_; }
    void isIncomplete(bool value) { isIncomplete_ = value; }

 private:
    std::int32_t famId_ = 0;
    std::int32_t subId_ = 0;
    std::int32_t flag1_ = 0;
    std::int32_t flag2_ = 0;
    ByteString requestId_ = ByteString(4, '\0');  // copied through, never read
    ByteString data_;
    bool isIncomplete_ = false;
};
