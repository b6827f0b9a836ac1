// clsHeaderTLV: one type-length-value record. On the wire: type (2), length (2), value; big-endian. The
// length is never stored, it is the length of the value. A chain (clsTLVChain) writes its records; a TLV
// alone does not.
#pragma once

#include "core/modTools.h"

class clsHeaderTLV {
 public:
    void Create(std::int32_t typ, ByteString value);

    // Reads the record at position `start` and returns the number of bytes consumed. A value cut short by the
    // end of the string is taken as far as it goes. Throws RuntimeError (InvalidArgument) when the string
    // ends inside type or length.
    std::size_t CreateFromString(std::string_view str, std::size_t start);

    std::int32_t tlvType() const { return type_; }
    void tlvType(std::int32_t value) { type_ = value; }
    const ByteString& Value() const { return value_; }
    void Value(ByteString value) { value_ = std::move(value); }

 private:
    std::int32_t type_ = 0;
    ByteString value_;
};
