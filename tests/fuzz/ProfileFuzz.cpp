// User-information replies, rewritten so that the profile shows its source.
#include <cstdint>

#include "base/RuntimeError.h"
#include "features/modAwayIdleProf.h"
#include "tests/fuzz/Check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    clsHeaderFLAP flap;
    flap.Create(2, ByteString(bytes, bytes + size));
    const auto before = flap.Data();
    try {
        modAwayIdleProf::SeeProfileHtml(flap);
        constexpr std::size_t kHead = 10 + 5;  // SNAC header and what stands around the name
        Check(flap.Data().substr(0, kHead) == before.substr(0, kHead), "the head is copied through");
        Check(flap.DataLen() == static_cast<std::int32_t>(flap.Data().size()), "the length is the data's");
    } catch (const RuntimeError&) {
        Check(flap.Data() == before, "a failure leaves the frame as it was");
    }
    return 0;
}
