#include "features/ReplacementList.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <set>
#include <utility>

#include "core/FlapFrame.h"

namespace {

constexpr std::size_t kShortestLength = 2;  // of a screen name in OSCAR data, blanks included

bool IsLength(char byte) {
    const auto length = static_cast<unsigned char>(byte);
    return length >= kShortestLength && length <= NameFinder::kMaxLength;
}

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
    std::array<char, NameFinder::kMaxLength + 1> bytes_;
    std::size_t size_ = 0;
};

std::size_t Beginning(char first, char second) {
    const auto number = [](char c) { return std::size_t{static_cast<unsigned char>(LowerAscii(c))}; };
    return number(first) << 8 | number(second);
}

// Data that are rewritten, in blocks of about this size: a replacement moves and searches anew what stands
// around it, and not all the rest.
class Rewriting {
 public:
    Rewriting(const NameFinder& finder, std::string_view data) : finder_(finder), size_(data.size()) {
        for (std::size_t from = 0; from < data.size(); from += kBlockSize) {
            Block block{ByteString(data.substr(from, kBlockSize)), {}};
            block.origins.resize(block.bytes.size());
            std::iota(block.origins.begin(), block.origins.end(), static_cast<std::uint32_t>(from));
            blocks_.push_back(std::move(block));
        }
        for (std::size_t at = 0; at < blocks_.size(); ++at) Search(at, 0);
    }

    // The pair that comes next.
    std::optional<std::size_t> Next() const {
        return !work_.empty() ? std::optional(work_.begin()->first) : std::nullopt;
    }

    // Has this name replaced in the block where the next pair was found. Returns false when the data would
    // grow too long.
    bool ReplaceNext(std::string_view name, std::string_view replacement) {
        const auto [pair, at] = *work_.begin();
        work_.erase(work_.begin());
        const auto key = KeyOf(name);
        bool isChanged = false;
        auto& bytes = blocks_[at].bytes;
        auto touched = at;  // the last block of which bytes were taken
        for (std::size_t offset = 0; offset < bytes.size(); ++offset) {
            Window window;
            const auto found = FoundBytes(bytes[offset], Behind(at, offset, window), key);
            if (found == 0) continue;
            isChanged = true;
            size_ = size_ - found + replacement.size();
            if (size_ > FlapFrame::kMaxPayload) return false;
            touched = std::max(touched, Replace(at, offset, found, replacement));
        }
        if (isChanged) SearchAround(at, touched, pair);
        return true;
    }

    wire::ChangedPayload Result() && {
        wire::ChangedPayload result;
        for (const auto& block : blocks_) {
            result.bytes += block.bytes;
            result.origins.insert(result.origins.end(), block.origins.begin(), block.origins.end());
        }
        return result;
    }

 private:
    static constexpr std::size_t kBlockSize = 256;
    using Window = std::array<char, NameFinder::kMaxLength>;

    struct Block {
        ByteString bytes;
        std::vector<std::uint32_t> origins;
    };

    // How many bytes at the front of `rest` are the name with this key, `length` standing before them; 0 when
    // they are another. Data that end early are compared as far as they go.
    static std::size_t FoundBytes(char length, std::string_view rest, std::string_view key) {
        if (!IsLength(length) || rest.empty() || LowerAscii(rest.front()) != key.front()) return 0;
        const auto name = rest.substr(0, static_cast<unsigned char>(length));
        return FoundKey(name) == key ? name.size() : 0;
    }

    // What follows the byte at `offset`, into the next blocks where its own ends too early.
    std::string_view Behind(std::size_t at, std::size_t offset, Window& window) const {
        auto rest = std::string_view(blocks_[at].bytes).substr(offset + 1);
        if (rest.size() >= window.size()) return rest.substr(0, window.size());
        auto size = rest.copy(window.data(), rest.size());
        while (size < window.size() && ++at < blocks_.size())
            size += blocks_[at].bytes.copy(window.data() + size, window.size() - size);
        return {window.data(), size};
    }

    // Returns the last block that has lost bytes.
    std::size_t Replace(std::size_t at, std::size_t offset, std::size_t found, std::string_view replacement) {
        auto last = at;
        auto from = offset + 1;
        for (;; ++last, from = 0) {
            auto& [bytes, origins] = blocks_[last];
            const auto count = std::min(found, bytes.size() - from);
            bytes.erase(from, count);
            const auto first = origins.begin() + static_cast<std::ptrdiff_t>(from);
            origins.erase(first, first + static_cast<std::ptrdiff_t>(count));
            found -= count;
            if (found == 0) break;
        }
        auto& [bytes, origins] = blocks_[at];
        bytes.insert(offset + 1, replacement);
        bytes[offset] = static_cast<char>(replacement.size());
        origins.insert(origins.begin() + static_cast<std::ptrdiff_t>(offset + 1), replacement.size(),
                       wire::kNewByte);
        return last;
    }

    // The pair has been searched for up to this block's end; what stands further on is still to be.
    void SearchAround(std::size_t at, std::size_t touched, std::size_t pair) {
        std::size_t reach = 0;
        for (auto before = at; before > 0 && reach <= NameFinder::kMaxLength;) {
            reach += blocks_[--before].bytes.size();
            Search(before, pair + 1);
        }
        Search(at, pair + 1);
        while (at < touched) Search(++at, pair);
    }

    void Search(std::size_t at, std::size_t from) {
        const auto& bytes = blocks_[at].bytes;
        for (std::size_t offset = 0; offset < bytes.size(); ++offset) {
            if (!IsLength(bytes[offset])) continue;
            Window window;
            const auto pair = finder_.Find(bytes[offset], Behind(at, offset, window), from);
            if (pair) work_.emplace(*pair, at);
        }
    }

    const NameFinder& finder_;
    std::vector<Block> blocks_;
    std::set<std::pair<std::size_t, std::size_t>>
        work_;  // pairs that may stand in blocks, in the order of their turns
    std::size_t size_;
};

bool Holds(const NameFinder& finder, std::string_view data) {
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (IsLength(data[i]) && finder.Find(data[i], data.substr(i + 1, NameFinder::kMaxLength), 0))
            return true;
    }
    return false;
}

}  // namespace

// A name may go on with a blank that does not count, or end with the data.
void NameFinder::Add(std::string_view name, std::size_t index) {
    auto key = KeyOf(name);
    if (key.size() - 1 > kMaxLength) return;  // longer, blanks left aside, than any in the data
    // The front stands for one byte of the name or, being a blank, for none.
    const std::size_t second = key.front() == ' ' ? 1 : 2;
    beginnings_.set(Beginning(key.front(), ' '));
    if (second < key.size()) beginnings_.set(Beginning(key.front(), key[second]));
    indices_[std::move(key)].push_back(index);
}

std::optional<std::size_t> NameFinder::Find(char length, std::string_view data, std::size_t from) const {
    if (data.empty() || !beginnings_[Beginning(data[0], data.size() > 1 ? data[1] : ' ')]) return {};
    const auto found =
        indices_.find(std::string_view(FoundKey(data.substr(0, static_cast<unsigned char>(length)))));
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
// where it is found in them; so what is not found, in the data as they are when its turn comes, is skipped.
std::optional<wire::ChangedPayload> ReplacementList::Rewrite(Direction direction,
                                                             std::string_view payload) const {
    const bool toServer = direction == Direction::ToServer;
    const auto& finder = toServer ? toServer_ : toClient_;
    if (payload.size() > FlapFrame::kMaxPayload || !Holds(finder, payload)) return {};
    Rewriting rewriting(finder, payload);
    while (const auto index = rewriting.Next()) {
        const auto& [screenName, replacement] = pairs_[*index];
        const bool fits = toServer ? rewriting.ReplaceNext(replacement, screenName)
                                   : rewriting.ReplaceNext(screenName, replacement);
        if (!fits) return {};
    }
    return std::move(rewriting).Result();
}

std::string ReplacementList::NameShown(const std::string& typed) const {
    if (typed.size() > NameFinder::kMaxLength) return typed;
    auto data = ByteToStr(static_cast<std::int32_t>(typed.size())) + typed;
    for (const auto direction : {Direction::ToServer, Direction::ToClient}) {
        if (auto changed = Rewrite(direction, data)) data = std::move(changed->bytes);
    }
    return data.substr(1);
}
