// modSNReplace: aliases for screen names. Wherever a listed screen name stands in what the server sends, the
// AIM client sees the alias; wherever the alias stands in what the client sends, the server sees the screen
// name. A name is found behind its length byte, which is mended; behind that the lengths that enclose it are,
// as far as the table of layouts (core/wire/) knows the frame.
//
// The list lies in "repl.dat" in the program's data folder: two lines for each pair, the screen name and the
// alias, ended by CR LF (CR or LF alone are read too).
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/SessionFeature.h"
#include "features/ReplacementList.h"

namespace modSNReplace {

inline constexpr std::size_t kMaxPairs = 1000;
inline constexpr std::size_t kMaxFileBytes = std::size_t{1024} * 1024;  // bytes read of "repl.dat"
inline constexpr std::size_t kMaxEditedBytes = 16 * kMaxFileBytes;
inline constexpr std::size_t kMaxName = 255;  // bytes; the length byte holds no more

// What the file holds.
struct AliasFile {
    std::vector<Replacement> pairs;
    std::string rest;  // the bytes beyond the limits, which no reader takes

    bool operator==(const AliasFile&) const = default;
};

// The pairs of the file in their order, whatever their halves hold; pairs without a screen name are left out
// while no other stands before them. A missing file has no pairs. Throws RuntimeError (FileAccess) when the
// file cannot be read, or is too large (kMaxEditedBytes) to be kept whole.
AliasFile ReadAliasFile();

// Replaces the file, the rest behind the pairs; running connections keep the list that they have. Throws what
// os::ReplaceFileWith does.
void SaveAliasFile(const AliasFile& file);

// The file as the snapshot for a connection that begins; nullptr when no pair of it can be applied. Pairs
// are applied when both halves have 1 to 255 bytes; longer ones are reported, once for the file.
std::shared_ptr<const ReplacementList> LoadReplacements();

// The list that connections begin with, for the features that share it.
class SharedList {
 public:
    // Reads the file. While it cannot be read, the list that was read last stands, which is reported; throws
    // RuntimeError where none has been read.
    std::shared_ptr<const ReplacementList> Load();

    // What the last Load gave; nullptr when there are no aliases.
    const std::shared_ptr<const ReplacementList>& Last() const { return list_; }

 private:
    std::shared_ptr<const ReplacementList> list_;
    bool isRead_ = false;
};

// The feature: every frame of a connection that begins while there are aliases. It loads the list; a
// connection for which there is none to be had is refused.
FeatureEntry Aliases(std::shared_ptr<SharedList> shared = std::make_shared<SharedList>());

// Rewrites a frame's payload: screen names by aliases toward the client, the reverse toward the server.
// Returns whether something was replaced; then `rewritten` holds the new payload, whose lengths fit if they
// fitted before. A payload that would grow over 65,535 bytes on the way stays as it is, and one whose
// structure would be torn: where a name is found across the end of a block, or in what is a length itself.
bool ReplaceScreenNames(const ReplacementList& list, Direction direction, std::uint8_t channel,
                        std::string_view payload, ByteString& rewritten);

}  // namespace modSNReplace
