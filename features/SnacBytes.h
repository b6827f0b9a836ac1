// SnacBytes: the data of SNACs read where they lie, without a copy: frames that a feature only looks into
// pass by the thousand. Payloads are those of FLAP frames: the SNAC header and its data.
//
// What takes bytes off the front throws RuntimeError (InvalidArgument) where they end too early.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "core/modTools.h"

// Family and subtype in one number. The payload holds a SNAC header.
constexpr std::uint32_t SnacKind(std::uint32_t family, std::uint32_t subtype) {
    return family << 16 | subtype;
}
std::uint32_t SnacKindOf(std::string_view payload);

// The data behind the header and, where its flags tell of one, behind the block of versions; "" where that
// does not end.
std::string_view SnacDataOf(std::string_view payload);

// Whether another SNAC of the same answer follows.
bool HasMoreToCome(std::string_view payload);

// The number by which an answer names the request that it answers.
std::uint32_t RequestIdOf(std::string_view payload);
ByteString WithRequestId(std::string_view payload, std::uint32_t requestId);
ByteString SnacPayload(std::uint16_t family, std::uint16_t subtype, std::uint32_t requestId,
                       std::string_view data = {});

std::string_view TakeBytes(std::string_view& bytes, std::size_t size);
std::uint8_t TakeByte(std::string_view& bytes);
std::uint16_t TakeWord(std::string_view& bytes);
std::uint32_t TakeDWord(std::string_view& bytes);

// A user as servers describe him: name behind its length byte, warning level (2), count of TLVs (2), these.
// All of it is taken; the name.
std::string_view TakeUser(std::string_view& bytes);

// The value of the first TLV of the type; nothing where there is none, or the TLVs before it are damaged.
std::optional<std::string_view> FindTlv(std::string_view tlvs, std::uint16_t type);

ByteString TlvBytes(std::uint16_t type, std::string_view value = {});
