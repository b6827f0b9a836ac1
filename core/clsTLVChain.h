// clsTLVChain: TLVs in the order read or added. Types may repeat; the order is kept.
#pragma once

#include <vector>

#include "core/clsHeaderTLV.h"

class clsTLVChain {
 public:
    // Appends the TLVs that stand from position `start` on, until `maxTlvs` have been read or the position
    // passes `end` or the end of the string. The last value may run past `end`, as far as the string allows.
    // Throws RuntimeError (InvalidArgument) when the string ends inside a TLV's type or length.
    void CreateFromString(std::string_view str, std::size_t start, std::size_t end, std::size_t maxTlvs);

    // The first, or the last, TLV of the type; nullptr when there is none. Valid until the chain changes.
    clsHeaderTLV* GetTLV(std::int32_t tlvType);
    clsHeaderTLV* GetTLVRev(std::int32_t tlvType);

    void Add(clsHeaderTLV newTlv);

    // All records one after the other; "" for an empty chain. Throws for a value over 65,535 bytes.
    ByteString toString() const;

    const std::vector<clsHeaderTLV>& Records() const { return records_; }

 private:
    std::vector<clsHeaderTLV> records_;
};
