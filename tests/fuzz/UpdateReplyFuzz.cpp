// The answers of the update server: whatever comes, in whatever pieces, the outcome is that of the reply fed
// whole, and nothing beyond the limits is kept.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "desktop/UpdateReply.h"

using UpdateReply::Download;
using UpdateReply::Version;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

// The sizes of the pieces come from the first input byte.
template <typename Feed>
void InPieces(std::uint8_t seed, std::string_view bytes, Feed feed) {
    std::size_t size = 1u + seed % 61u;
    while (!bytes.empty()) {
        feed(bytes.substr(0, size));
        bytes.remove_prefix(std::min(size, bytes.size()));
        size = 1 + (size * 7 + seed) % 61;
    }
}

void CheckVersion(std::uint8_t seed, std::string_view reply) {
    Version whole(17);
    whole.Feed(reply);
    Version inPieces(17);
    InPieces(seed, reply, [&](std::string_view piece) { inPieces.Feed(piece); });
    const auto result = whole.End();
    Require(result != Version::Result::Reading && inPieces.End() == result);
    if (result != Version::Result::Offer) return;
    for (const auto* word : {&whole.Revision(), &whole.Path(), &whole.ProposedName()}) {
        Require(!word->empty());
        for (const char c : *word) Require(static_cast<unsigned char>(c) > 0x20 && c != 0x7F);
    }
    Require(whole.Path() == inPieces.Path());
}

void CheckDownload(std::uint8_t seed, std::string_view reply) {
    Download whole;
    const auto file = whole.Feed(reply);
    Download inPieces;
    std::uint64_t received = 0;
    InPieces(seed, reply, [&](std::string_view piece) { received += inPieces.Feed(piece).size(); });
    Require(whole.GetState() == inPieces.GetState());
    Require(received == file.size() && whole.Received() == received);
    const auto expected = whole.ExpectedLength();
    const bool complete = whole.End() == Download::State::Complete;
    if (complete && expected) Require(received == *expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view reply(reinterpret_cast<const char*>(data) + 1, size - 1);
    CheckVersion(data[0], reply);
    CheckDownload(data[0], reply);
    return 0;
}
