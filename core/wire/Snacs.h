// The table of SNACs: every kind of families 1 to 0x18 that clients and servers of the time use.
#pragma once

#include <cstdint>
#include <span>

#include "core/wire/Layout.h"

namespace wire {

// The family under which the payloads of a connection's other channels stand, the channel being the subtype.
inline constexpr std::uint16_t kNoSnac = 0;

// In the order of family and subtype.
std::span<const Snac> Snacs();

// The rows of a kind; empty for one that is not in the table.
std::span<const Snac> SnacsOf(std::uint16_t family, std::uint16_t subtype);

// What a family is for; "" for one that is not in the table.
const char* FamilyName(std::uint16_t family);

}  // namespace wire
