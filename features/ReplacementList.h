// ReplacementList: the aliases of one connection and the rewriting of its frames; immutable.
//
// A screen name stands in OSCAR data as a length byte followed by the name. A name is found where
//   - the byte before it, L, is 2 to 16, the lengths of screen names,
//   - its first byte is there, whatever its case, and
//   - the L bytes from there (fewer at the end of the data) equal it, case and blanks left aside.
// L counts blanks too, so it may exceed the length of the name that is sought.
#pragma once

#include <bitset>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/SessionFeature.h"
#include "core/wire/Lengths.h"

// A pair of the list, both halves as typed.
struct Replacement {
    std::string screenName;
    std::string replacement;

    bool operator==(const Replacement&) const = default;
};

// Tells which names of a list stand in data, however many there are.
class NameFinder {
 public:
    static constexpr std::size_t kMaxLength = 16;  // bytes of a name in the data

    // Adds the name of a pair; indices go up.
    void Add(std::string_view name, std::size_t index);

    // The lowest index, `from` or above, of a name that stands behind this length byte. `data` are what
    // follows it, kMaxLength bytes of them or all there are.
    std::optional<std::size_t> Find(char length, std::string_view data, std::size_t from) const;

 private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };

    // Whether a name begins with these two bytes: most data hold none, and this is cheaper than to look one
    // up.
    std::bitset<0x10000> beginnings_;
    std::unordered_map<std::string, std::vector<std::size_t>, Hash, std::equal_to<>> indices_;
};

class ReplacementList {
 public:
    // Every half must have 1 to 255 bytes.
    explicit ReplacementList(std::vector<Replacement> pairs);

    // Rewrites data, pair after pair, so that what one pair wrote the next may find; each replaces every
    // occurrence of its name, what the replacement brings along included: the search goes on behind the first
    // byte of what was put in. Nothing when no name was found, and when the data would grow over 65,535 bytes
    // on the way.
    std::optional<wire::ChangedPayload> Rewrite(Direction direction, std::string_view payload) const;

    // What the user sees in the place of the name that he has typed: of a name that has an alias, or is one,
    // the alias as the list has it.
    std::string NameShown(const std::string& typed) const;

 private:
    std::vector<Replacement> pairs_;
    NameFinder toServer_;  // finds the replacements
    NameFinder toClient_;  // finds the screen names
};
