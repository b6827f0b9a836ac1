// The answers of the update server: whatever comes, in whatever pieces, the outcome is that of the reply fed
// whole, and nothing beyond the limits is kept.
#include <cstdint>
#include <string_view>

#include "desktop/UpdateReply.h"
#include "tests/fuzz/Check.h"

using UpdateReply::Download;
using UpdateReply::Version;

namespace {

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
    Check(result != Version::Result::Reading && inPieces.End() == result, "the same result in pieces");
    if (result != Version::Result::Offer) return;
    for (const auto* word : {&whole.Revision(), &whole.Path(), &whole.ProposedName()}) {
        Check(!word->empty(), "an offer has all its words");
        for (const char c : *word)
            Check(static_cast<unsigned char>(c) > 0x20 && c != 0x7F, "words are clean");
    }
    Check(whole.Path() == inPieces.Path(), "the same path in pieces");
}

void CheckDownload(std::uint8_t seed, std::string_view reply) {
    Download whole;
    const auto file = whole.Feed(reply);
    Download inPieces;
    std::uint64_t received = 0;
    InPieces(seed, reply, [&](std::string_view piece) { received += inPieces.Feed(piece).size(); });
    Check(whole.GetState() == inPieces.GetState(), "the same state in pieces");
    Check(received == file.size() && whole.Received() == received, "the same bytes in pieces");
    const auto expected = whole.ExpectedLength();
    const bool complete = whole.End() == Download::State::Complete;
    if (complete && expected) Check(received == *expected, "a complete file has its length");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view reply(reinterpret_cast<const char*>(data) + 1, size - 1);
    CheckVersion(data[0], reply);
    CheckDownload(data[0], reply);
    return 0;
}
