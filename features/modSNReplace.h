// modSNReplace: aliases for screen names. Wherever a listed screen name stands in what the server sends, the
// AIM client sees the alias; wherever the alias stands in what the client sends, the server sees the screen
// name. A name is found behind its length byte, which is mended; lengths further out are not.
//
// The list lies in "repl.dat" in the program's data folder: two lines for each pair, the screen name and the
// alias, ended by CR LF (CR or LF alone are read too).
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "features/ReplacementList.h"

namespace modSNReplace {

inline constexpr std::size_t kMostPairs = 1000;
inline constexpr std::size_t kLargestFile = std::size_t{1024} * 1024;  // bytes read of "repl.dat"
inline constexpr std::size_t kLongestName = 255;                       // bytes; the length byte holds no more

// The pairs of the file in their order, whatever their halves hold; pairs without a screen name are left out
// while no other stands before them. A missing file has no pairs. What lies beyond the limits is not read,
// which is reported. Throws RuntimeError (FileAccess) when the file cannot be read.
std::vector<Replacement> ReadReplacements();

// Replaces the file; running connections keep the list that they have. Throws what os::ReplaceFileWith does.
void SaveReplacements(const std::vector<Replacement>& pairs);

// The file as the snapshot for a connection that begins; nullptr when no pair of it can be applied. Pairs
// are applied when both halves have 1 to 255 bytes; longer ones are reported, once for the file.
std::shared_ptr<const ReplacementList> LoadReplacements();

// Rewrites a frame's payload: screen names by aliases toward the client, the reverse toward the server, pair
// after pair, so that what one pair wrote the next may find. Returns whether something was replaced; then
// `rewritten` holds the new payload. A payload that would grow over 65,535 bytes on the way stays as it is.
bool ReplaceScreenNames(const ReplacementList& list, Direction direction, std::string_view payload,
                        ByteString& rewritten);

}  // namespace modSNReplace
