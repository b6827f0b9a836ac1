// Cuts a hostile stream at hostile places and holds the frames against a reader written from the rules alone,
// which keeps everything it has and takes one frame at a time.
//
// Input: a count of chunks, their lengths, then the stream; what the lengths leave over is one more chunk.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/FlapStream.h"
#include "tests/fuzz/Check.h"
#include "tests/fuzz/ReferenceReader.h"

namespace {

class FrameList {
 public:
    explicit FrameList(FlapStream& stream) { stream.Frame.Bind<&FrameList::Take>(*this); }
    std::vector<std::string> frames;

 private:
    void Take(std::span<char> bytes) { frames.emplace_back(bytes.begin(), bytes.end()); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t chunks = std::min<std::size_t>(data[0], size - 1);
    std::string stream(reinterpret_cast<const char*>(data) + 1 + chunks, size - 1 - chunks);

    FlapStream tested;
    FrameList list(tested);
    ReferenceReader reference;
    for (std::size_t i = 0; i <= chunks && !stream.empty(); ++i) {
        const std::size_t length = i == chunks ? stream.size() : data[1 + i];
        auto chunk = stream.substr(0, length);
        stream.erase(0, chunk.size());
        reference.Feed(chunk);
        if (!chunk.empty()) tested.Feed(chunk);
    }
    reference.End();
    tested.PeerClosed();
    Check(list.frames == reference.frames, "the frames of the reference reader");
    return 0;
}
