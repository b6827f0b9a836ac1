#include "features/ReplacementList.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t kShortestLength = 2;  // of a screen name in OSCAR data, blanks included
constexpr std::size_t kLongestLength = 16;
constexpr std::size_t kLargestPayload = 0xFFFF;

// What two names must share to be equal: the first byte as it stands but for case, because the search goes
// by it, and then the normal form.
std::string KeyOf(std::string_view name) {
    return LowerAscii(name.front()) + NormalizeScreenName(name);
}

// The same for what stands in the data, without the heap.
class FoundKey {
 public:
    explicit FoundKey(std::string_view name) {
        bytes_[size_++] = LowerAscii(name.front());
        for (const char c : name) {
            if (c != ' ') bytes_[size_++] = LowerAscii(c);
        }
    }
    operator std::string_view() const { return {bytes_.data(), size_}; }

 private:
    std::array<char, kLongestLength + 1> bytes_;
    std::size_t size_ = 0;
};

// Bytes that names are made of, each letter in both cases, and one kind for all the others, which are
// frequent in binary data.
constexpr std::size_t kKindCount = 32;
constexpr auto kKinds = [] {
    constexpr std::uint8_t kOther = 0, kBlank = 1, kDigit = 2, kFirstLetter = 3;
    std::array<std::uint8_t, 256> kinds;
    kinds.fill(kOther);
    kinds[' '] = kBlank;
    for (unsigned char c = '0'; c <= '9'; ++c) kinds[c] = kDigit;
    for (std::uint8_t i = 0; i < 26; ++i) {
        kinds[static_cast<unsigned char>('a' + i)] = static_cast<std::uint8_t>(kFirstLetter + i);
        kinds[static_cast<unsigned char>('A' + i)] = static_cast<std::uint8_t>(kFirstLetter + i);
    }
    return kinds;
}();

bool IsLength(unsigned char byte) {
    return byte >= kShortestLength && byte <= kLongestLength;
}

constexpr std::size_t kBlock = 64;

constexpr std::uint64_t kEach = 0x0101010101010101u;
constexpr std::uint64_t kTop = kEach * 0x80;

// The top bits of those bytes of the word that may be length bytes.
std::uint64_t LengthBytesOf(std::uint64_t word) {
    // Sums of the low seven bits reach the top bit of their byte where they pass a bound, and no further.
    const auto low = word & ~kTop;
    const auto longEnough = low + kEach * (0x80 - kShortestLength);
    const auto tooLong = (low + kEach * (0x7F - kLongestLength)) | word;
    return longEnough & ~tooLong & kTop;
}

// The top bits of the eight bytes as eight bits, the first byte's as the lowest.
std::uint64_t GatherTopBits(std::uint64_t word) {
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word * 0x0002040810204081u >> 56;
}

// Which of up to kBlock bytes may be length bytes, the first as the lowest bit. Eight at a time and without a
// branch for each: where length bytes are frequent, guessing them wrong would cost the most.
std::uint64_t LengthBytes(std::string_view block) {
    std::array<std::uint64_t, kBlock / sizeof(std::uint64_t)> words{};
    // The constant size of a whole block is worth a branch.
    if (block.size() == kBlock) std::memcpy(words.data(), block.data(), kBlock);
    if (block.size() < kBlock) std::memcpy(words.data(), block.data(), block.size());
    std::uint64_t any = 0;
    for (auto& word : words) any |= word = LengthBytesOf(word);
    if (any == 0) return 0;

    std::uint64_t found = 0;
    for (std::size_t i = 0; i < words.size(); ++i)
        found |= GatherTopBits(words[i]) << (i * sizeof(std::uint64_t));
    return found;
}

// How many bytes at the front of `rest` are the name with this key, `length` standing before them; 0 when
// they are another. Data that end early are compared as far as they go.
std::size_t FoundBytes(unsigned char length, std::string_view rest, std::string_view key) {
    if (!IsLength(length) || LowerAscii(rest.front()) != key.front()) return 0;
    const auto name = rest.substr(0, length);
    return FoundKey(name) == key ? name.size() : 0;
}

// Replaces every occurrence of a name, what the replacement brings along included: the search goes on behind
// the first byte of what was put in. Returns false, with the data unspecified, when they would grow too long.
//
// The data are moved through a buffer of the largest size: what is done stands at its front, what is still to
// be searched at its end, and the gap between them is what the data may still grow.
bool ReplaceName(ByteString& data, std::string_view name, std::string_view replacement) {
    const auto key = KeyOf(name);
    ByteString buffer(kLargestPayload, '\0');
    std::size_t next = buffer.size() - data.size();
    std::size_t done = 0;
    data.copy(buffer.data() + next, data.size());

    while (next < buffer.size()) {
        const auto length = static_cast<unsigned char>(done > 0 ? buffer[done - 1] : 0);
        const auto found = FoundBytes(length, std::string_view(buffer).substr(next), key);
        if (found > 0) {
            next += found;
            if (next - done < replacement.size()) return false;
            next -= replacement.size();
            replacement.copy(buffer.data() + next, replacement.size());
            buffer[done - 1] = static_cast<char>(replacement.size());
        }
        buffer[done++] = buffer[next++];
    }
    data.assign(buffer, 0, done);
    return true;
}

}  // namespace

// A name may go on with a blank that does not count, or end with the data.
std::size_t NameFinder::Beginning(char first, char second) {
    const auto kind = [](char c) { return std::size_t{kKinds[static_cast<unsigned char>(c)]}; };
    return kind(first) * kKindCount + kind(second);
}

void NameFinder::Add(std::string_view name, std::size_t index) {
    auto key = KeyOf(name);
    const auto length = key.size() - 1;  // without blanks: no L below it can bring the name
    if (length > kLongestLength) return;
    const std::size_t behindFirst =
        key.front() == ' ' ? 1 : 2;  // what the key's front stands for, once or twice
    for (const char second : {' ', key.size() > behindFirst ? key[behindFirst] : ' '}) {
        auto& least = leastLength_[Beginning(key.front(), second)];
        least = std::min(least, static_cast<std::uint8_t>(std::max(length, kShortestLength)));
    }
    indices_[std::move(key)].push_back(index);
}

std::optional<std::size_t> NameFinder::FirstFound(std::string_view data, std::size_t from) const {
    std::optional<std::size_t> first;
    // A name needs a byte behind its length byte, so the last byte is none.
    const auto lengths = data.substr(0, data.size() - std::min<std::size_t>(1, data.size()));
    for (std::size_t block = 0; block < lengths.size(); block += kBlock) {
        for (auto found = LengthBytes(lengths.substr(block, kBlock)); found != 0; found &= found - 1) {
            const auto at = data.substr(block + static_cast<std::size_t>(std::countr_zero(found)));
            const auto second = at.size() > 2 ? at[2] : ' ';
            if (static_cast<unsigned char>(at[0]) < leastLength_[Beginning(at[1], second)]) continue;
            const auto index = Look(at, from);
            if (index && (!first || *index < *first)) first = index;
        }
    }
    return first;
}

std::optional<std::size_t> NameFinder::Look(std::string_view data, std::size_t from) const {
    const auto length = static_cast<unsigned char>(data.front());
    const auto found = indices_.find(std::string_view(FoundKey(data.substr(1, length))));
    if (found == indices_.end()) return {};
    const auto index = std::lower_bound(found->second.begin(), found->second.end(), from);
    return index != found->second.end() ? std::optional(*index) : std::nullopt;
}

ReplacementList::ReplacementList(std::vector<Replacement> pairs) : pairs_(std::move(pairs)) {
    for (std::size_t index = 0; index < pairs_.size(); ++index) {
        toServer_.Add(pairs_[index].replacement, index);
        toClient_.Add(pairs_[index].screenName, index);
    }
}

// Every pair in list order would be searched for in what the pairs before it left. A pair changes data only
// where it is found in them, and its first find lies in the data as they are when its turn comes; so a pair
// that the finder does not see in them can be skipped, and the finder is asked again after every change.
bool ReplacementList::Rewrite(Direction direction, std::string_view payload, ByteString& rewritten) const {
    if (payload.size() > kLargestPayload) return false;
    const bool toServer = direction == Direction::ToServer;
    const auto& finder = toServer ? toServer_ : toClient_;

    auto index = finder.FirstFound(payload, 0);
    if (!index) return false;
    rewritten = payload;
    for (; index; index = finder.FirstFound(rewritten, *index + 1)) {
        const auto& [screenName, replacement] = pairs_[*index];
        const bool fits = toServer ? ReplaceName(rewritten, replacement, screenName)
                                   : ReplaceName(rewritten, screenName, replacement);
        if (!fits) return false;
    }
    return true;
}
