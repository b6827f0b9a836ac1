// The alias list as a file and the rewriting of frames by it, against the literal algorithm. The input is
// the payload, behind its length in one byte, and then the file.
#include <cstdint>

#include "features/modSNReplace.h"
#include "os/fake/FakeFiles.h"
#include "tests/fuzz/Check.h"
#include "tests/fuzz/Input.h"
#include "tests/unit/LiteralReplacer.h"

namespace {

std::vector<Replacement> AppliedPairs() {
    auto pairs = modSNReplace::ReadAliasFile().pairs;
    std::erase_if(pairs, [](const Replacement& pair) {
        const auto fits = [](const std::string& half) { return !half.empty() && half.size() <= 255; };
        return !fits(pair.screenName) || !fits(pair.replacement);
    });
    return pairs;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Input input(bytes, size);
    const auto payload = input.Bytes(input.Byte());
    os::fake::PutFile("/program\\repl.dat", input.Rest());

    const auto pairs = AppliedPairs();
    const auto list = modSNReplace::LoadReplacements();
    Check((list == nullptr) == pairs.empty(), "no list without a pair");
    if (list == nullptr) return 0;
    for (const auto direction : {Direction::ToServer, Direction::ToClient}) {
        const auto changed = list->Rewrite(direction, payload);
        Check((changed ? changed->bytes : payload) == RewriteLiterally(pairs, direction, payload),
              "as the literal algorithm");
    }
    return 0;
}
