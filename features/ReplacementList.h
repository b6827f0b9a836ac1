// ReplacementList: the aliases of one connection and the rewriting of its frames; immutable.
//
// A screen name stands in OSCAR data as a length byte followed by the name. A name is found where
//   - the byte before it, L, is 2 to 16, the lengths of screen names,
//   - its first byte is there, whatever its case, and
//   - the L bytes from there (fewer at the end of the data) equal it, case and blanks left aside.
// L counts blanks too, so it may exceed the length of the name that is sought.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/SessionHooks.h"

// A pair of the list, both halves as typed.
struct Replacement {
    std::string screenName;
    std::string replacement;

    bool operator==(const Replacement&) const = default;
};

// Tells in one pass over the data, however many names there are, which of them stand in it. Most data hold
// none, so what is cheap comes first: the length bytes, then length and first two bytes, and only then the
// name itself.
class NameFinder {
 public:
    // Adds the name of a pair; indices go up.
    void Add(std::string_view name, std::size_t index);

    // The lowest index, `from` or above, whose name is found in the data.
    std::optional<std::size_t> FirstFound(std::string_view data, std::size_t from) const;

 private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };

    // The lowest index, `from` or above, of the name behind the length byte at the front of the data.
    std::optional<std::size_t> Look(std::string_view data, std::size_t from) const;

    // The number of what a name's first two bytes are.
    static std::size_t Beginning(char first, char second);

    // By that number: the least L with which one can be found; kNoName when none begins so.
    static constexpr std::uint8_t kNoName = 0xFF;
    std::array<std::uint8_t, 1024> leastLength_ = [] {
        std::array<std::uint8_t, 1024> lengths;
        lengths.fill(kNoName);
        return lengths;
    }();
    std::unordered_map<std::string, std::vector<std::size_t>, Hash, std::equal_to<>> indices_;
};

class ReplacementList {
 public:
    // Every half must have 1 to 255 bytes.
    explicit ReplacementList(std::vector<Replacement> pairs);

    // As modSNReplace::ReplaceScreenNames.
    bool Rewrite(Direction direction, std::string_view payload, ByteString& rewritten) const;

 private:
    std::vector<Replacement> pairs_;
    NameFinder toServer_;  // finds the replacements
    NameFinder toClient_;  // finds the screen names
};
