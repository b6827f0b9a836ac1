// clsHeaderFLAP: one FLAP frame as a record. On the wire (big-endian):
//
//   offset  width   field
//   0       1       marker, always 0x2A when written, never checked when parsed
//   1       1       channel (1 sign-on, 2 SNAC data, 3 error, 4 close, 5 keep-alive)
//   2       2       sequence number
//   4       2       length of the payload
//   6       length  payload
//
// The stream itself is read with FlapHeader (core/FlapHeader.h), which looks at frames where they lie.
// Records are made for frames that a feature looks into or builds.
#pragma once

#include "core/modTools.h"

class clsHeaderFLAP {
 public:
    // Total length of the parsed frame, DataLen + 6. Only ParseData sets it; 0 on a created frame.
    std::int32_t MessageLen() const { return messageLen_; }

    // A frame for sending: sequence number 0 (the stream socket numbers it), DataLen from the data, complete.
    void Create(std::int32_t channelId, ByteString data);

    // Parses the frame whose marker stands at position `start`. Never throws: a buffer that ends too early
    // gives an incomplete frame, whose fields hold what could be read.
    //
    // A buffer of exactly four bytes reads as an empty frame and leaves isIncomplete and MessageLen as they
    // were: servers end the sessions of old clients with such a frame. A record that has parsed nothing
    // counts as incomplete.
    void ParseData(std::string_view strData, std::size_t start = 1);

    // The wire form. The length written is DataLen, not the length of Data: whoever changes Data sets it.
    ByteString toString() const;

    std::int32_t SeqNum() const { return seqNum_; }
    void SeqNum(std::int32_t value) { seqNum_ = value; }
    std::int32_t ChannelID() const { return channelId_; }
    void ChannelID(std::int32_t value) { channelId_ = value; }
    std::int32_t DataLen() const { return dataLen_; }
    void DataLen(std::int32_t value) { dataLen_ = value; }
    const ByteString& Data() const { return data_; }
    void Data(ByteString value) { data_ = std::move(value); }
    bool isIncomplete() const { return isIncomplete_; }
    void isIncomplete(bool value) { isIncomplete_ = value; }

 private:
    std::int32_t seqNum_ = 0;
    std::int32_t channelId_ = 0;
    std::int32_t dataLen_ = 0;
    std::int32_t messageLen_ = 0;
    ByteString data_;
    bool isIncomplete_ = true;
};
